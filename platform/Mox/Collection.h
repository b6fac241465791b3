// Mox::Collection: the generated keyed collection of a model type, here an
// ordered map so that walks are deterministic. Readers look entries up with
// find() (null when absent) or walk it in key order; writers use is() and
// del().
//
//   Mox::Collection<Hardware::Vorn::FapId, Hardware::Vorn::FapType> fapType;
//   fapType.is(FapId(1), fapTypeArad);
//   if (const FapType* t = fapType.find(FapId(1))) ...
#pragma once

#include <cstddef>
#include <map>
#include <utility>

namespace Mox {

template <typename K, typename V>
class Collection {
 public:
  using Map = std::map<K, V>;
  using const_iterator = typename Map::const_iterator;

  std::size_t size() const noexcept { return map_.size(); }
  bool empty() const noexcept { return map_.empty(); }
  const_iterator begin() const noexcept { return map_.begin(); }
  const_iterator end() const noexcept { return map_.end(); }

  // The entry of `key`, or null when there is none.
  const V* find(const K& key) const {
    auto it = map_.find(key);
    return it == map_.end() ? nullptr : &it->second;
  }
  // The entry of `key`, or `absent`.
  V valueOr(const K& key, V absent) const {
    const V* v = find(key);
    return v ? *v : std::move(absent);
  }
  bool contains(const K& key) const { return map_.count(key) != 0; }
  // The first entry whose key is greater than `key`.
  const_iterator after(const K& key) const { return map_.upper_bound(key); }

  // Adds or replaces the entry of `key`.
  void is(const K& key, V value) { map_.insert_or_assign(key, std::move(value)); }
  void del(const K& key) { map_.erase(key); }
  void clear() noexcept { map_.clear(); }

 private:
  Map map_;
};

}  // namespace Mox
