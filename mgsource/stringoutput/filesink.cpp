// FileStringOutput: texts to a file named by an OutputName, through the C library's streams.
#include <stdio.h>

#include "mg/stringoutput.h"

FileStringOutput::FileStringOutput(const OutputName* outputName)
    : name(outputName != nullptr ? outputName->Clone() : nullptr) {}

FileStringOutput::~FileStringOutput() {
    if (isOpen) fclose(file);
    delete name;
}

void FileStringOutput::Open(int32_t mode) {
    if (name == nullptr) return;
    if (isOpen) {  // a second Open starts over with the new mode
        fclose(file);
        file = nullptr;
        isOpen = 0;
    }
    FILE* stream = fopen(name->GetName(), mode == 0 ? "w" : "a");
    if (stream == nullptr) return;
    file = stream;
    if (mode == 1) fseek(file, 0, SEEK_END);
    isOpen = 1;
}

void FileStringOutput::Output(const char* format, va_list args) {
    if (!isOpen) return;
    FormatInto(buffer, kOutputLimit, format, args);
    fputs(buffer, file);
}
