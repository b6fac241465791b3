#include "Mox/Singleton.h"

#include <map>
#include <mutex>
#include <string>

namespace Mox {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, Ptr<PtrInterface>> objects;
};

Registry& registry() {
  static Registry* r = new Registry();  // lives for the process
  return *r;
}

}  // namespace

Ptr<PtrInterface> singletonLookup(const char* typeName) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  auto it = r.objects.find(typeName);
  return it == r.objects.end() ? Ptr<PtrInterface>() : it->second;
}

Ptr<PtrInterface> singletonInsert(const char* typeName, Ptr<PtrInterface> object) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  auto [it, inserted] = r.objects.emplace(typeName, object);
  return it->second;
}

void singletonErase(const char* typeName) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.objects.erase(typeName);
}

}  // namespace Mox
