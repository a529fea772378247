// What the compiler calls and Debian's libraries for wasm32 lack, above all for throw and catch:
// exceptions of C++ on those of WebAssembly. Itanium C++ ABI: Exception Handling, and Exception Handling Tables; one
// thread, no foreign exceptions.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <typeinfo>

namespace __cxxabiv1 {

// The virtual table of std::type_info in libc++abi, which knows what a handler of a type catches.
class __shim_type_info : public std::type_info {
 public:
  ~__shim_type_info() override;
  virtual void noop1() const;
  virtual void noop2() const;
  virtual bool can_catch(const __shim_type_info* thrown, void*& object) const = 0;
};

}  // namespace __cxxabiv1

namespace {

using Type = __cxxabiv1::__shim_type_info;

// Stands before the object that is thrown. Destructors return their object on this machine.
struct alignas(16) Header {
  const std::type_info* type;
  void* (*destroy)(void*);
  void* caught;   // the object as its handler's type
  Header* outer;  // of the exceptions that are being handled
  int handlers;   // that handle it; below 0 while it is thrown again
};

Header* handled = nullptr;

void* ObjectOf(Header* header) { return header + 1; }
Header* HeaderOf(void* object) { return static_cast<Header*>(object) - 1; }

[[noreturn]] void Throw(Header* header) {
  __builtin_wasm_throw(0, header);
  __builtin_unreachable();
}

// The exception handling table of a function, read from front to back.
class Table {
 public:
  explicit Table(const std::uint8_t* at) : at_(at) {}

  const std::uint8_t* At() const { return at_; }
  std::uint8_t Byte() { return *at_++; }
  std::uint32_t Unsigned() {
    std::uint32_t value = 0;
    int shift = 0;
    for (std::uint8_t byte = 0x80; byte & 0x80; shift += 7) {
      byte = Byte();
      value |= static_cast<std::uint32_t>(byte & 0x7f) << shift;
    }
    return value;
  }
  std::int32_t Signed() {
    std::uint32_t value = 0;
    int shift = 0;
    std::uint8_t byte = 0x80;
    for (; byte & 0x80; shift += 7) {
      byte = Byte();
      value |= static_cast<std::uint32_t>(byte & 0x7f) << shift;
    }
    if (shift < 32 && byte & 0x40) value |= ~std::uint32_t{0} << shift;
    return static_cast<std::int32_t>(value);
  }

 private:
  const std::uint8_t* at_;
};

// The index of the first type of a landing pad that catches the exception; 0 where none does.
int HandlerOf(Header* header, const std::uint8_t* table, std::uint32_t landingPad) {
  constexpr std::uint8_t kOmitted = 0xff;
  Table head(table);
  if (head.Byte() != kOmitted) std::abort();  // a start of its own for landing pads
  if (head.Byte() == kOmitted) return 0;      // no types: all clean up only
  const std::uint32_t typesAfter = head.Unsigned();
  const auto* types = reinterpret_cast<const std::type_info* const*>(head.At() + typesAfter);
  head.Byte();  // the encoding of the call sites
  const std::uint32_t sitesSize = head.Unsigned();
  const std::uint8_t* const actions = head.At() + sitesSize;

  std::uint32_t action = 0;
  for (std::uint32_t site = 0; site <= landingPad; ++site) {
    head.Unsigned();
    action = head.Unsigned();
  }
  for (const std::uint8_t* at = actions + action - 1; action != 0;) {
    Table row(at);
    const int type = row.Signed();
    const std::uint8_t* const link = row.At();
    const int next = row.Signed();
    if (type > 0) {
      const auto* catches = static_cast<const Type*>(types[-type]);
      void* object = ObjectOf(header);
      if (!catches || catches->can_catch(static_cast<const Type*>(header->type), object)) {
        header->caught = object;
        return type;
      }
    }
    if (next == 0) break;
    at = link + next;
  }
  return 0;
}

}  // namespace

extern "C" {

// What landing pads hand over and take back.
struct {
  std::uint32_t landingPad;
  const std::uint8_t* table;
  std::int32_t handler;
} __wasm_lpad_context;

int _Unwind_CallPersonality(void* exception) {
  auto& pad = __wasm_lpad_context;
  pad.handler = HandlerOf(static_cast<Header*>(exception), pad.table, pad.landingPad);
  return 0;
}

// Only its address is used.
void __gxx_wasm_personality_v0() { std::abort(); }

void* __cxa_allocate_exception(std::size_t size) {
  void* room = std::malloc(sizeof(Header) + size);
  if (!room) std::abort();
  return ObjectOf(static_cast<Header*>(room));
}

void __cxa_free_exception(void* object) { std::free(HeaderOf(object)); }

[[noreturn]] void __cxa_throw(void* object, std::type_info* type, void* (*destroy)(void*)) {
  Header* const header = HeaderOf(object);
  *header = {type, destroy, object, nullptr, 0};
  Throw(header);
}

void* __cxa_get_exception_ptr(void* exception) { return static_cast<Header*>(exception)->caught; }

void* __cxa_begin_catch(void* exception) {
  auto* const header = static_cast<Header*>(exception);
  header->handlers = std::abs(header->handlers) + 1;
  if (handled != header) {
    header->outer = handled;
    handled = header;
  }
  return header->caught;
}

void __cxa_end_catch() {
  Header* const header = handled;
  if (header->handlers < 0) {  // thrown again: it lives on
    if (++header->handlers == 0) handled = header->outer;
    return;
  }
  if (--header->handlers > 0) return;
  handled = header->outer;
  if (header->destroy) header->destroy(ObjectOf(header));
  __cxa_free_exception(ObjectOf(header));
}

[[noreturn]] void __cxa_rethrow() {
  if (!handled) std::terminate();
  handled->handlers = -handled->handlers;
  Throw(handled);
}

// The one thread never ends.
int __cxa_thread_atexit(void (*)(void*), void*, void*) { return 0; }

}  // extern "C"

// libc++'s own gives null where there is no memory.
void* operator new(std::size_t size) {
  if (void* room = std::malloc(size ? size : 1)) return room;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
