// Reference-counted interfaces and the references to them.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "QDCall.h"

namespace quarda {

struct TGuid {
  uint32_t data1;
  uint16_t data2;
  uint16_t data3;
  uint8_t data4[8];

  friend constexpr bool operator==(const TGuid&, const TGuid&) = default;
};
static_assert(sizeof(TGuid) == 16);

/// Results of QueryInterface.
inline constexpr int32_t kInterfaceFound = 0;
inline constexpr int32_t kNoInterface = static_cast<int32_t>(0x80004002u);

/// The base of every interface. An object lives while somebody holds a reference to it. Interfaces
/// hold no data, no overloads and no virtual destructor: their operations stand in a fixed order of
/// slots.
struct IRefCounted {
  static constexpr TGuid kGuid{0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

  /// Puts a counted reference to the interface `guid` of this object into `out`, or null.
  virtual int32_t QDCALL QueryInterface(const TGuid& guid, void** out) = 0;
  /// Both return the new count.
  virtual int32_t QDCALL AddRef() = 0;
  virtual int32_t QDCALL Release() = 0;

 protected:
  ~IRefCounted() = default;
};

/// A counted reference with value semantics: one pointer, may be null. This is how interfaces are
/// returned and kept; as arguments they are passed as plain pointers, which the callee borrows.
template <class I>
class TRef {
 public:
  TRef() noexcept = default;
  TRef(std::nullptr_t) noexcept {}
  explicit TRef(I* object) noexcept : object_(object) {
    if (object_) object_->AddRef();
  }
  TRef(const TRef& other) noexcept : TRef(other.object_) {}
  TRef(TRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class Derived>
  requires(std::is_convertible_v<Derived*, I*> && !std::is_same_v<Derived, I>)
      TRef(const TRef<Derived>& other)
  noexcept : TRef(static_cast<I*>(other.Get())) {}
  TRef& operator=(TRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~TRef() {
    if (object_) object_->Release();
  }

  I* Get() const noexcept { return object_; }
  I* operator->() const noexcept { return object_; }
  I& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  void Reset() noexcept { *this = TRef(); }
  /// Another interface of the same object; null when it has none.
  template <class Other>
  TRef<Other> As() const {
    void* found = nullptr;
    if (!object_ || object_->QueryInterface(Other::kGuid, &found) != kInterfaceFound) return {};
    TRef<Other> result(static_cast<Other*>(found));
    result->Release();
    return result;
  }

  friend bool operator==(const TRef& a, const TRef& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const TRef& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  I* object_ = nullptr;
};

/// Implements the counting of an object with the interfaces named; the first is its identity. An
/// object starts with a count of zero and dies with its last reference. Parents of an interface are
/// named as `Also`: `TRefCountedObject<TInterfaces<IConfig>, IConfigFile>` answers QueryInterface
/// for both.
template <class... Interfaces>
struct TInterfaces {};

template <class Bases, class... Also>
class TRefCountedObject;

template <class First, class... Rest, class... Also>
class TRefCountedObject<TInterfaces<First, Rest...>, Also...> : public First, public Rest... {
 public:
  TRefCountedObject() = default;
  TRefCountedObject(const TRefCountedObject&) = delete;
  TRefCountedObject& operator=(const TRefCountedObject&) = delete;

  int32_t QDCALL QueryInterface(const TGuid& guid, void** out) override {
    *out = nullptr;
    if (guid == IRefCounted::kGuid || guid == First::kGuid || ((guid == Also::kGuid) || ...)) {
      *out = static_cast<First*>(this);
    } else {
      ((guid == Rest::kGuid ? static_cast<void>(*out = static_cast<Rest*>(this))
                            : static_cast<void>(0)),
       ...);
    }
    if (!*out) return kNoInterface;
    AddRef();
    return kInterfaceFound;
  }
  int32_t QDCALL AddRef() override { return ++references_; }
  int32_t QDCALL Release() override {
    const int32_t left = --references_;
    if (left == 0) {
      references_ = 1;  // a reference taken and dropped while it dies must not end it twice
      delete this;
    }
    return left;
  }

 protected:
  virtual ~TRefCountedObject() = default;

 private:
  int32_t references_ = 0;
};

/// A counted object of one interface and its parents.
template <class I, class... Parents>
using TRefCounted = TRefCountedObject<TInterfaces<I>, Parents...>;

/// Makes an object and the first reference to it.
template <class T, class... Arguments>
TRef<T> MakeRef(Arguments&&... arguments) {
  return TRef<T>(new T(std::forward<Arguments>(arguments)...));
}

static_assert(sizeof(TRef<IRefCounted>) == sizeof(void*), "a reference is one pointer");

}  // namespace quarda
