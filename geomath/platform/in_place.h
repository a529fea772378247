#pragma once

#include <cstddef>
#include <new>
#include <type_traits>

namespace zel_cs::geomath {

/// Room in an object for a record that only its sources define, such as the prepared constants of
/// a conversion: who includes the class does not see its formulas, and is not compiled again when
/// they change. The room is `kDoubles` doubles large and comes zeroed; copies of the object copy
/// the record.
template <class Record, std::size_t kDoubles>
class InPlace {
 public:
  /// The record, where it is defined.
  Record& operator*() { return *At<Record>(room_); }
  const Record& operator*() const { return *At<const Record>(room_); }
  Record* operator->() { return At<Record>(room_); }
  const Record* operator->() const { return At<const Record>(room_); }

 private:
  // The bytes hold a record from the start: a trivially copyable one comes to life with its room.
  template <class Type, class Room>
  static Type* At(Room& room) {
    static_assert(std::is_trivially_copyable_v<Record> && alignof(Record) <= alignof(double));
    static_assert(sizeof(Record) <= sizeof room);
    return std::launder(reinterpret_cast<Type*>(room));
  }

  alignas(double) std::byte room_[kDoubles * sizeof(double)] = {};
};

}  // namespace zel_cs::geomath
