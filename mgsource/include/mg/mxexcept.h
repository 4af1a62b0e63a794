// Exceptions: MXExcept, the one exception type the library throws, and SEH_Exception for
// hardware faults; the conversion of whatever is in flight into an MXExcept; and the
// library's global operator new, where bad_alloc enters.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <exception>

#include "mg/mgtypes.h"
#include "mg/stackwalk.h"

class MXExcept : public std::exception {
  public:
    // `detail` (cut to 127 characters) and `file` (its first 31) may be null; the trace
    // starts at the code that constructs the object.
    MXExcept(int32_t err, const char* detail, const char* file, int32_t line);
    MXExcept(const MXExcept&) = default;
    MXExcept& operator=(const MXExcept&) = default;
    ~MXExcept() override = default;

    // "MXExcept. Err=<err>, File=<file>, Line=<line>, Detail='<detail>'", cut to 255.
    const char* what() const noexcept override;
    virtual int32_t GetError() const;
    virtual const char* GetFile() const;
    virtual int32_t GetLine() const;
    virtual const char* GetDetail() const;
    virtual ExceptStackTrace& GetStackTrace();
    virtual const ExceptStackTrace& GetStackTrace() const;

  private:
    int32_t err;
    char detail[128];
    char file[32];
    int32_t line;
    char message[256];
    ExceptStackTrace stack;
};

// A hardware fault turned into a C++ exception by the fault translator.
class SEH_Exception {
  public:
    explicit SEH_Exception(uint32_t faultCode) : code(faultCode) {}
    SEH_Exception(const SEH_Exception&) = default;
    SEH_Exception& operator=(const SEH_Exception&) = default;
    virtual ~SEH_Exception() = default;

    virtual ExceptStackTrace& GetStackTrace();
    virtual const ExceptStackTrace& GetStackTrace() const;
    uint32_t GetCode() const { return code; }

  private:
    uint32_t code;
    ExceptStackTrace stack;
};

// What the fault translator knows of a fault: the frame pointer of the faulting code and the
// fault's address, valid when `complete` (both the register context and the exception record
// were at hand).
struct SEHFaultInfo {
    bool complete;
    StackAddress framePointer;
    StackAddress address;
};

[[noreturn]] void ThrowMXExcept(int32_t err, const char* detail, const char* file, int32_t line);
// Throws MXExcept 2 with `detail` when `pointer` is null.
void ThrowIfNull(const void* pointer, const char* detail, const char* file, int32_t line);
// Only inside a catch-all: the exception in flight as an MXExcept. bad_alloc gives error 2,
// an MXExcept a copy, any other type error 42; an SEH_Exception is thrown on, unconverted.
MXExcept ConvertCurrentException();
// Throws an SEH_Exception of `code`; its trace starts at the fault's address, when `fault`
// tells it.
[[noreturn]] void SEHTranslator(uint32_t code, const SEHFaultInfo* fault);
// Registers SEHTranslator for the calling thread where the runtime offers a translator;
// returns 1 when it did, 0 when there is none (see mgsource/mxexcept/README.md).
int32_t InstallSEHTranslator();

MG_EXTERN_C_BEGIN

// The runtime's failed-allocation handler: calls the handler it replaced, if any, and
// returns 1 when that gives nonzero; otherwise throws bad_alloc.
int MXNewHandler(size_t size);
// The handler that MXNewHandler replaced at start-up; null when none.
extern int (*gPreviousNewHandler)(size_t size);

MG_EXTERN_C_END
