// Mox::FlatMap: a small keyed collection kept as one sorted vector of
// (key, value) pairs. It walks in key order like std::map and compares equal
// when the entries are, but holds its entries in one block, so building a
// collection of a few dozen entries costs a handful of allocations instead of
// one per entry. Insertion in the middle moves the later entries: meant for
// collections of tens of entries, or for ones built in key order (appending
// past the last key costs no search).
//
//   Mox::FlatMap<Mox::String, bool> config;
//   config.insert_or_assign("Ethernet7", true);
//   for (const auto& [name, on] : config) ...
//   if (auto it = config.find("Ethernet7"); it != config.end()) it->second ...
#pragma once

#include <algorithm>
#include <cstddef>
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
  // Removes the entry of `key`; false when there was none.
  bool erase(const K& key) {
    auto it = lowerBound(entries_, key);
    if (it == entries_.end() || key < it->first) return false;
    entries_.erase(it);
    return true;
  }
  void clear() noexcept { entries_.clear(); }
  void reserve(std::size_t n) { entries_.reserve(n); }

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
