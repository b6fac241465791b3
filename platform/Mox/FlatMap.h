// Mox::FlatMap: a small keyed collection kept as one sorted vector of
// (key, value) pairs. It walks in key order like std::map and compares equal
// when the entries are, but holds its entries in one block, so building a
// collection of a few dozen entries costs a handful of allocations instead of
// one per entry. Insertion in the middle moves the later entries: meant for
// collections of tens of entries, or for ones built in key order (appending
// past the last key costs no search). A collection that comes in no useful
// order is built in one go with assign(), which places each entry once.
//
//   Mox::FlatMap<Mox::String, bool> config;
//   config.insert_or_assign("Ethernet7", true);
//   for (const auto& [name, on] : config) ...
//   if (auto it = config.find("Ethernet7"); it != config.end()) it->second ...
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

namespace Mox {

template <typename K, typename V>
class FlatMap {
 public:
  using key_type = K;
  using mapped_type = V;
  using value_type = std::pair<K, V>;
  using const_iterator = typename std::vector<value_type>::const_iterator;

  std::size_t size() const noexcept { return entries_.size(); }
  bool empty() const noexcept { return entries_.empty(); }
  const_iterator begin() const noexcept { return entries_.begin(); }
  const_iterator end() const noexcept { return entries_.end(); }

  // The entry of `key`, or end().
  const_iterator find(const K& key) const {
    auto it = lowerBound(entries_, key);
    return it != entries_.end() && !(key < it->first) ? it : end();
  }
  bool contains(const K& key) const { return find(key) != end(); }

  // Adds the entry of `key`, or replaces the value of the one there is.
  // Returns the stored value.
  V& insert_or_assign(K key, V value) {
    if (entries_.empty() || entries_.back().first < key) {
      // The first block already holds a few entries: a collection of this
      // kind rarely stays at one or two.
      if (entries_.size() == entries_.capacity())
        entries_.reserve(std::max<std::size_t>(kFirstBlock, 2 * entries_.size()));
      entries_.emplace_back(std::move(key), std::move(value));
      return entries_.back().second;
    }
    auto it = lowerBound(entries_, key);
    if (!(key < it->first)) {
      it->second = std::move(value);
      return it->second;
    }
    return entries_.emplace(it, std::move(key), std::move(value))->second;
  }
  // Appends an entry whose key is past every key there is, building the key
  // from `key` and the value from `args` in place; no key is compared. For a
  // builder that has put its entries in order itself: a key out of order
  // breaks the map (checked in debug builds only). Returns the stored value.
  template <typename KeyArg, typename... Args>
  V& emplace_back(KeyArg&& key, Args&&... args) {
    value_type& entry = entries_.emplace_back(std::piecewise_construct,
                                              std::forward_as_tuple(std::forward<KeyArg>(key)),
                                              std::forward_as_tuple(std::forward<Args>(args)...));
    assert(entries_.size() < 2 || entries_[entries_.size() - 2].first < entry.first);
    return entry.second;
  }
  // Removes the entry of `key`; false when there was none.
  bool erase(const K& key) {
    auto it = lowerBound(entries_, key);
    if (it == entries_.end() || key < it->first) return false;
    entries_.erase(it);
    return true;
  }
  void clear() noexcept { entries_.clear(); }
  void reserve(std::size_t n) { entries_.reserve(n); }

  // Replaces the contents with the entries of [first, last), in any order,
  // moving from them: the map that inserting them one by one with
  // insert_or_assign gives (of entries with equal keys the last one stays).
  // Each entry is moved once, into a block of the final size. The order is
  // found on positions, merging the ascending runs of the input, so input in
  // order or made of a few ordered stretches costs few comparisons. Needs
  // keys ordered by <=>.
  template <std::random_access_iterator It>
  void assign(It first, It last) {
    const std::size_t n = static_cast<std::size_t>(last - first);
    entries_.clear();
    entries_.reserve(n);
    if (n == 0) return;
    // Positions, spare positions and run ends: on the stack for the usual
    // sizes.
    constexpr std::size_t kStackEntries = 64;
    std::uint32_t stackBuffer[3 * kStackEntries];
    std::unique_ptr<std::uint32_t[]> heapBuffer;
    std::uint32_t* order = stackBuffer;
    if (n > kStackEntries) {
      heapBuffer.reset(new std::uint32_t[3 * n]);
      order = heapBuffer.get();
    }
    std::uint32_t* spare = order + n;
    std::uint32_t* runEnds = spare + n;
    // Whether two keys compared equal: adjacent entries of the final order
    // are always compared with each other, so without one there are no
    // repeated keys to drop.
    bool repeated = false;
    std::size_t runs = 0;
    for (std::size_t i = 0; i < n; ++i) {
      order[i] = static_cast<std::uint32_t>(i);
      if (i == 0) continue;
      auto c = first[i - 1].first <=> first[i].first;
      repeated = repeated || c == 0;
      if (c > 0) runEnds[runs++] = static_cast<std::uint32_t>(i);
    }
    runEnds[runs++] = static_cast<std::uint32_t>(n);
    // Merges neighbouring runs until one is left; of equal keys the earlier
    // position stays first.
    while (runs > 1) {
      std::size_t merged = 0;
      std::uint32_t start = 0;
      for (std::size_t r = 0; r < runs; r += 2) {
        const std::uint32_t mid = runEnds[r];
        const std::uint32_t end = r + 1 < runs ? runEnds[r + 1] : mid;
        std::uint32_t i = start, j = mid, k = start;
        while (i != mid && j != end) {
          auto c = first[order[j]].first <=> first[order[i]].first;
          repeated = repeated || c == 0;
          spare[k++] = c < 0 ? order[j++] : order[i++];
        }
        while (i != mid) spare[k++] = order[i++];
        while (j != end) spare[k++] = order[j++];
        runEnds[merged++] = end;
        start = end;
      }
      runs = merged;
      std::swap(order, spare);
    }
    for (std::size_t i = 0; i < n; ++i) {
      auto& entry = first[order[i]];
      // An entry whose key comes again is replaced by the later one.
      if (repeated && i + 1 < n && !(entry.first < first[order[i + 1]].first)) continue;
      entries_.emplace_back(std::move(entry.first), std::move(entry.second));
    }
  }

  bool operator==(const FlatMap&) const = default;

 private:
  static constexpr std::size_t kFirstBlock = 8;

  // The first entry whose key is not less than `key`, of `entries_` as
  // const or not.
  template <typename Entries>
  static auto lowerBound(Entries& entries, const K& key) {
    return std::lower_bound(entries.begin(), entries.end(), key,
                            [](const value_type& e, const K& k) { return e.first < k; });
  }

  std::vector<value_type> entries_;
};

}  // namespace Mox
