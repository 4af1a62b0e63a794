// Stack traces: return addresses taken along the frame-pointer chain, and their names.
#pragma once

#include <stdint.h>

#include <memory>

#include "mg/mgtypes.h"

class StringOutput;

// A code address, as wide as a pointer: exactly 32 bits on the 32-bit target.
typedef uintptr_t StackAddress;

// A list of fixed capacity, filled from the front; appends to a full list are dropped.
template <typename T>
class FixedList {
  public:
    // Throws bad_alloc when the array cannot be had.
    explicit FixedList(int32_t capacity)
        : capacity_(capacity > 0 ? capacity : 0), items_(new T[capacity_ > 0 ? capacity_ : 1]) {}
    int32_t Length() const { return length_; }
    int32_t Capacity() const { return capacity_; }
    const T& operator[](int32_t i) const { return items_[i]; }
    bool Append(const T& item) {
        if (length_ >= capacity_) return false;
        items_[length_++] = item;
        return true;
    }

  private:
    int32_t length_ = 0;
    int32_t capacity_;
    std::unique_ptr<T[]> items_;
};

#pragma pack(push, 1)
// One named address: "module symbol", cut to 49 characters, and the distance from the
// symbol's start. Packed: 58 bytes on the 32-bit target.
struct DecodedFrame {
    StackAddress address;
    char name[50];
    uint32_t offset;
};
#pragma pack(pop)
static_assert(sizeof(DecodedFrame) == sizeof(StackAddress) + 54, "DecodedFrame is packed");

// Turns addresses into named frames.
class AddressDecoder {
  public:
    virtual ~AddressDecoder() = default;
    virtual void SetMode(int32_t mode) = 0;
    // Throws bad_alloc when the list cannot be had.
    virtual FixedList<DecodedFrame> Decode() = 0;
};

// A decoder of a list of addresses; derivations say how one address is named.
class AddressListDecoder : public AddressDecoder {
  public:
    AddressListDecoder(const StackAddress* addresses, int32_t count);
    // One frame for each address that LookUp names, in order.
    FixedList<DecodedFrame> Decode() override;
    // Writes the address's name, NUL-terminated within `nameSize`, and its offset.
    virtual bool LookUp(StackAddress address, char* name, int32_t nameSize, uint32_t* offset) = 0;

  protected:
    FixedList<StackAddress> addresses;
};

// Names through the platform's symbol library, loaded for `mode` (see SetMode).
class StackDecoder : public AddressListDecoder {
  public:
    using AddressListDecoder::AddressListDecoder;
    // 0 names nothing, 1 the main module's functions alone, any other value every module's.
    void SetMode(int32_t newMode) override { mode = newMode; }
    // "module symbol", with "<unknown>" for either part that can't be found; always true.
    bool LookUp(StackAddress address, char* name, int32_t nameSize, uint32_t* offset) override;

  private:
    int32_t mode = 2;
};

// Return addresses of one moment, newest first. Capture allocates nothing, so that it works
// when memory is exhausted.
class StackTrace {
  public:
    virtual ~StackTrace() = default;
    // Walks from the caller's frames, dropping the first `skip` addresses (the first is in
    // Capture itself).
    virtual void Capture(int32_t skip);
    // Walks from `frame`, a frame pointer (0: as Capture), after `pc`, when nonzero, as the
    // first address; `skip` counts `pc` too.
    virtual void CaptureFrom(StackAddress frame, StackAddress pc, int32_t skip);
    // A decoder of the held addresses; throws bad_alloc when it cannot be had.
    virtual std::unique_ptr<StackDecoder> MakeDecoder() const;
    virtual StackAddress* Addresses() = 0;
    virtual int32_t Capacity() const = 0;

    const StackAddress* Addresses() const { return const_cast<StackTrace*>(this)->Addresses(); }
    int32_t Count() const { return count; }

  protected:
    StackTrace() = default;
    StackTrace(const StackTrace&) = default;
    StackTrace& operator=(const StackTrace&) = default;

    int32_t count = 0;
};

// The trace of the failure log.
class FailureStackTrace : public StackTrace {
  public:
    using StackTrace::Addresses;
    StackAddress* Addresses() override { return addresses; }
    int32_t Capacity() const override { return 15; }

  private:
    StackAddress addresses[15] = {};
};

// The trace an exception carries; copies take the addresses along.
class ExceptStackTrace : public StackTrace {
  public:
    ExceptStackTrace() = default;
    ExceptStackTrace(const ExceptStackTrace&) = default;
    ExceptStackTrace& operator=(const ExceptStackTrace&) = default;
    using StackTrace::Addresses;
    StackAddress* Addresses() override { return addresses; }
    int32_t Capacity() const override { return 8; }

  private:
    StackAddress addresses[8] = {};
};

// Prints one line "0x<address> - <module> <symbol> + <offset>" for each frame of `trace`
// to `output`, naming every module; a null trace prints nothing. Never throws.
void DDumpStack(const StackTrace* trace, StringOutput* output);
