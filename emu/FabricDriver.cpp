#include "emu/FabricDriver.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <unordered_map>

#include "emu/Handler.h"
#include "emu/HostSockets.h"

namespace Emu {
namespace {

std::atomic<FabricDriver*> gInstalled{nullptr};

// Open readers of "/proc/vorn-dma": a snapshot of the listing and a cursor.
struct ProcReader {
  std::string text;
  std::size_t pos = 0;
};
constexpr int kFirstProcFd = FabricDriver::kFabricFd + 1;
std::mutex gProcMutex;
std::unordered_map<int, ProcReader> gProcReaders;
int gNextProcFd = kFirstProcFd;

bool isProcFd(int fd) { return fd >= kFirstProcFd && fd < kFirstProcFd + (1 << 20); }

const Kernel::Ops& nextOps() {
  FabricDriver* d = gInstalled.load(std::memory_order_acquire);
  return d ? d->next() : Kernel::linuxOps();
}

int emuOpen(const char* path, int flags) {
  FabricDriver* d = gInstalled.load(std::memory_order_acquire);
  if (d && std::strcmp(path, "/dev/fabric") == 0) return FabricDriver::kFabricFd;
  if (d && std::strcmp(path, "/proc/vorn-dma") == 0) {
    std::string text = d->procListing();
    std::lock_guard<std::mutex> lock(gProcMutex);
    int fd = gNextProcFd++;
    gProcReaders[fd] = ProcReader{std::move(text), 0};
    return fd;
  }
  return nextOps().open(path, flags);
}

int emuClose(int fd) {
  if (fd == FabricDriver::kFabricFd) return 0;
  if (hostsock::isSocketFd(fd)) return hostsock::close(fd);
  if (isProcFd(fd)) {
    std::lock_guard<std::mutex> lock(gProcMutex);
    if (gProcReaders.erase(fd)) return 0;
    errno = EBADF;
    return -1;
  }
  return nextOps().close(fd);
}

ssize_t emuRead(int fd, void* buf, std::size_t count) {
  if (isProcFd(fd)) {
    std::lock_guard<std::mutex> lock(gProcMutex);
    auto it = gProcReaders.find(fd);
    if (it == gProcReaders.end()) {
      errno = EBADF;
      return -1;
    }
    ProcReader& r = it->second;
    std::size_t n = std::min(count, r.text.size() - r.pos);
    std::memcpy(buf, r.text.data() + r.pos, n);
    r.pos += n;
    return static_cast<ssize_t>(n);
  }
  return nextOps().read(fd, buf, count);
}

int emuIoctl(int fd, unsigned long request, void* arg) {
  if (fd == FabricDriver::kFabricFd) {
    FabricDriver* d = gInstalled.load(std::memory_order_acquire);
    if (!d) {
      errno = ENODEV;
      return -1;
    }
    int rc = d->command(static_cast<char*>(arg), static_cast<unsigned>(request));
    if (rc != 0) {
      errno = rc;
      return -1;
    }
    return 0;
  }
  if (hostsock::isSocketFd(fd)) {
    FabricDriver* d = gInstalled.load(std::memory_order_acquire);
    int rc = d && hostsock::isOpen(fd) ? d->hostRequest(request, arg) : EBADF;
    if (rc != 0) {
      errno = rc;
      return -1;
    }
    return 0;
  }
  return nextOps().ioctl(fd, request, arg);
}

ssize_t emuWrite(int fd, const void* buf, std::size_t n) { return nextOps().write(fd, buf, n); }
int emuSocket(int domain, int type, int protocol) {
  FabricDriver* d = gInstalled.load(std::memory_order_acquire);
  if (d && hostsock::isEmulated(*d, domain, type)) return d->hostSocket();
  return nextOps().socket(domain, type, protocol);
}
int emuBind(int fd, const sockaddr* a, socklen_t l) { return nextOps().bind(fd, a, l); }
DIR* emuOpendir(const char* p) { return nextOps().opendir(p); }
dirent* emuReaddir(DIR* d) { return nextOps().readdir(d); }
int emuClosedir(DIR* d) { return nextOps().closedir(d); }
long emuSysconf(int n) { return nextOps().sysconf(n); }
int emuUsleep(unsigned int us) { return nextOps().usleep(us); }
const char* emuGetenv(const char* n) { return nextOps().getenv(n); }

const Kernel::Ops kEmuOps = {emuOpen,     emuClose,    emuIoctl,    emuRead,   emuWrite,
                             emuSocket,   emuBind,     emuOpendir,  emuReaddir, emuClosedir,
                             emuSysconf,  emuUsleep,   emuGetenv};

const std::unordered_map<std::string_view, const Handler*>& handlerIndex() {
  static const auto* index = [] {
    auto* m = new std::unordered_map<std::string_view, const Handler*>();
    for (std::span<const Handler> family : handlerFamilies())
      for (const Handler& h : family) (*m)[h.keyword] = &h;
    return m;
  }();
  return *index;
}

}  // namespace

FabricDriver::FabricDriver() { install(); }

FabricDriver::~FabricDriver() { uninstall(); }

void FabricDriver::install() {
  if (isInstalled_) return;
  const Kernel::Ops* current = &Kernel::ops();
  next_ = (current == &kEmuOps) ? &Kernel::linuxOps() : current;
  replaced_ = Kernel::opsIs(&kEmuOps);
  gInstalled.store(this, std::memory_order_release);
  isInstalled_ = true;
}

void FabricDriver::uninstall() {
  if (!isInstalled_) return;
  if (tcEmulated_) tcEmulatedIs(false);
  FabricDriver* expected = this;
  gInstalled.compare_exchange_strong(expected, nullptr);
  if (expected == this) Kernel::opsIs(replaced_ == &kEmuOps ? nullptr : replaced_);
  isInstalled_ = false;
}

FabricDriver* FabricDriver::installed() noexcept { return gInstalled.load(std::memory_order_acquire); }

int FabricDriver::command(char* buf, unsigned size) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::string text;
  int rc = dispatch(buf, size, text);
  log_.push_back(std::move(text));
  answers_.push_back(rc);
  return rc;
}

int FabricDriver::dispatch(char* buf, unsigned size, std::string& text) {
  if (!buf) return EFAULT;
  Command cmd;
  if (!parseCommand(buf, size, cmd)) {
    text.assign(buf, strnlen(buf, size));
    return EINVAL;
  }
  text.assign(cmd.text);
  auto script = scriptFor(cmd.text);
  if (script != scripted_.end()) {
    int error = script->second.first;
    if (--script->second.second == 0) scripted_.erase(script);
    return error;
  }
  auto it = handlerIndex().find(cmd.keyword);
  if (it == handlerIndex().end() || it->second->size != size) return EINVAL;
  return it->second->run(*this, cmd, buf, size);
}

// Tries the text whole, then cut before each blank from the right: the first
// prefix found is the longest that matches at a token boundary.
FabricDriver::Scripts::iterator FabricDriver::scriptFor(std::string_view text) {
  std::size_t end = text.size();
  while (true) {
    auto it = scripted_.find(text.substr(0, end));
    if (it != scripted_.end()) return it;
    if (end == 0 || (end = text.rfind(' ', end - 1)) == std::string_view::npos)
      return scripted_.end();
  }
}

void FabricDriver::answerNext(std::string_view prefix, int error, unsigned count) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (count == 0) return;
  scripted_[std::string(prefix)] = {error, count};
}

std::vector<FabricDriver::ScriptedAnswer> FabricDriver::scriptedAnswers() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::vector<ScriptedAnswer> out;
  for (const auto& [prefix, answer] : scripted_)
    out.push_back({prefix, answer.first, answer.second});
  return out;
}

void FabricDriver::clearScriptedAnswers() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  scripted_.clear();
}

std::vector<std::string> FabricDriver::commands() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return log_;
}

std::vector<int> FabricDriver::answers() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return answers_;
}

void FabricDriver::clearLog() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  log_.clear();
  answers_.clear();
  tcCommands_.clear();
}

void FabricDriver::pciDevicePresentIs(const std::string& pci, bool present) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (present)
    devices_.pciPresent.insert(pci);
  else
    devices_.pciPresent.erase(pci);
}

std::string FabricDriver::procListing() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::string out = "devices:\n";
  for (const auto& [name, dev] : devices_.devices)
    out += name + " " + dev.pci + (dev.up ? " up\n" : " down\n");
  out += "\n";
  out += lagListing(lags_);
  return out;
}

}  // namespace Emu
