// Output sinks: one printf-like target for diagnostics, whatever lies behind it, and the
// names of output files. The format is the format engine's (mg/format.h). Each user makes
// the sink it wants; there is no default one.
#pragma once

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>

#include "mg/mgtypes.h"

class StringOutput {
  public:
    virtual ~StringOutput() = default;
    // Prepares the sink for output; nothing here.
    virtual void Open(int32_t mode);
    virtual int32_t Printf(const char* format, ...) = 0;
    virtual int32_t VPrintf(const char* format, va_list args) = 0;
};

// A sink that formats each call into its own buffer, at most 512 characters, and passes the
// text on. Returns the count of calls taken; a call made from inside the sink's own output
// is dropped and returns the count unchanged.
class FormattingStringOutput : public StringOutput {
  public:
    int32_t Printf(const char* format, ...) override;
    int32_t VPrintf(const char* format, va_list args) override;

  protected:
    static constexpr int32_t kBufferSize = 513;
    static constexpr int32_t kOutputLimit = 512;

    virtual void Output(const char* format, va_list args) = 0;
    // Formats into `buffer` with at most `size` characters and a NUL behind them; the length.
    int32_t FormatInto(char* buffer, int32_t size, const char* format, va_list args);

  private:
    int32_t Take(const char* format, va_list args);

    int32_t lineCount = 0;
    uint8_t inOutput = 0;
};

// Passes each text to DPrintf.
class DPrintfOutput : public FormattingStringOutput {
  protected:
    void Output(const char* format, va_list args) override;

  private:
    char buffer[kBufferSize];
};

// Writes each text to the standard error stream.
class StdErrStringOutput : public FormattingStringOutput {
  protected:
    void Output(const char* format, va_list args) override;

  private:
    char buffer[kBufferSize];
};

// Writes each text to a console of the process's own (the standard output on POSIX).
class ConsoleStringOutput : public FormattingStringOutput {
  public:
    ConsoleStringOutput();
    ConsoleStringOutput(const ConsoleStringOutput&) = delete;
    ConsoleStringOutput& operator=(const ConsoleStringOutput&) = delete;
    ~ConsoleStringOutput() override;

  protected:
    void Output(const char* format, va_list args) override;

  private:
    void* outHandle = nullptr;
    void* inHandle = nullptr;
    char buffer[kBufferSize];
};

// Hands each text to the platform's debugger channel.
class DebuggerStringOutput : public FormattingStringOutput {
  protected:
    void Output(const char* format, va_list args) override;

  private:
    char buffer[kBufferSize];
};

class OutputName;

// Writes each text to a file, once Open has opened it; silent before and when that fails.
// Nothing flushes between writes: the data reaches the file when the sink is destroyed.
class FileStringOutput : public FormattingStringOutput {
  public:
    // Keeps a clone of `name`; with a null name, or a failed clone, Open opens nothing.
    explicit FileStringOutput(const OutputName* name);
    FileStringOutput(const FileStringOutput&) = delete;
    FileStringOutput& operator=(const FileStringOutput&) = delete;
    ~FileStringOutput() override;
    // 0 truncates; anything else appends, and 1 also moves to the end at once.
    void Open(int32_t mode) override;

  protected:
    void Output(const char* format, va_list args) override;

  private:
    FILE* file = nullptr;
    OutputName* name;
    uint8_t isOpen = 0;
    [[maybe_unused]] uint8_t reserved = 0;  // cleared, never read
    char buffer[kBufferSize];
};

// Gives every call to two sinks, either of which may be null, first to `first`. The result
// is that of the last call made, 0 when neither is set. Owns neither.
class TeeStringOutput : public StringOutput {
  public:
    TeeStringOutput(StringOutput* firstOutput, StringOutput* secondOutput)
        : first(firstOutput), second(secondOutput) {}
    void Open(int32_t mode) override;
    int32_t Printf(const char* format, ...) override;
    int32_t VPrintf(const char* format, va_list args) override;

  private:
    StringOutput* first;
    StringOutput* second;
};

// Collects the texts of all calls in a growing LStr, with no limit and no terminator, while
// it is enabled (it starts disabled). Printf and VPrintf always return 0; a text that
// doesn't fit in memory is lost without a word.
class LStrOutput : public StringOutput {
  public:
    // Throws MXExcept 2 when the LStr can't be allocated.
    LStrOutput();
    LStrOutput(const LStrOutput& other);
    LStrOutput& operator=(const LStrOutput& other);
    ~LStrOutput() override;

    int32_t Printf(const char* format, ...) override;
    int32_t VPrintf(const char* format, va_list args) override;
    // Takes no argument and does nothing.
    virtual void Flush();

    void SetEnabled(int32_t on) { enabled = on; }
    int32_t IsEnabled() const { return enabled; }
    // The collected text, a compact-zone handle owned by the sink.
    LStrHandle Text() const { return text; }

  private:
    void Append(const char* format, va_list args);

    LStrHandle text = nullptr;
    int32_t enabled = 0;
};

// The name of an output file.
class OutputName {
  public:
    virtual ~OutputName() = default;
    // A new copy from operator new(nothrow), or null.
    virtual OutputName* Clone() const = 0;
    virtual const char* GetName() const = 0;
};

// Where an OutputFileName puts the file.
enum OutputNameKind : int32_t {
    kOutputInTempDirectory = 0,
    kOutputNameAsGiven = 1,  // and every value not listed here
    kOutputBesideProgram = 2,
    kOutputInTempDirectoryToo = 3,
};

class OutputFileName : public OutputName {
  public:
    // Every name, with its NUL, fits in this many bytes.
    static constexpr int32_t kNameSize = 289;

    // Builds the name of `inFilename` by `kind`, with ".txt" behind it when `addSuffix` is
    // nonzero. Throws MXExcept 1 for a null `inFilename`, MXExcept 7 when the name would not
    // fit or the program's file name can't be had.
    OutputFileName(int32_t kind, const char* inFilename, uint8_t addSuffix);
    OutputName* Clone() const override;
    const char* GetName() const override { return name; }

  private:
    char name[kNameSize];
};

// Factories: a new object from operator new(nothrow), owned by the caller, or null.
StringOutput* MakeConsoleOutput();
StringOutput* MakeDebuggerOutput();
StringOutput* MakeFileOutput(const OutputName* name);
// Null also when the name can't be built.
OutputName* MakeOutputName(int32_t kind, const char* inFilename, uint8_t addSuffix);
