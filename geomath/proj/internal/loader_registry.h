#pragma once

#include <cstddef>
#include <vector>

#include "geomath/platform/zel_string.h"

namespace zel_cs::geomath {

/// Loaders under their keys, in the order of their registration. Owns none and has no lock.
template <class Loader>
class LoaderRegistry {
 public:
  /// Appends an entry; null is refused.
  void Add(const CZelStringT<wchar_t>& key, Loader* loader) {
    if (loader) entries_.push_back({key, loader});
  }

  /// Removes every entry of a loader.
  void Remove(const Loader* loader) {
    std::erase_if(entries_, [loader](const Entry& entry) { return entry.loader == loader; });
  }

  /// The first loader of a key, letter case included, or null.
  Loader* Find(const CZelStringT<wchar_t>& key) const {
    for (const Entry& entry : entries_)
      if (entry.key.Compare(key) == 0) return entry.loader;
    return nullptr;
  }

  std::size_t Size() const { return entries_.size(); }
  Loader* At(std::size_t index) const { return entries_[index].loader; }

 private:
  struct Entry {
    CZelStringT<wchar_t> key;
    Loader* loader;
  };
  std::vector<Entry> entries_;
};

/// The registry of a process: made at its first use and never destroyed, because a host's statics
/// ask it, and take their loaders out of it, until the process is gone.
template <class Registry>
Registry& ProcessWide() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace zel_cs::geomath
