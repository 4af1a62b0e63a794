// The shared constants of the text and number layer. They hold their final values from the
// start, so that conversions used before SupportInit (or by a host that never calls it)
// behave as after it; SupportInit stores them again as part of its start-up.
#include "mg/support.h"

extern "C" {

int32_t ProcessId = 0;
char AMText[3] = "AM";
int32_t AMTextLength = 0;
char PMText[3] = "PM";
int32_t PMTextLength = 0;
LStrHandle LStrCR = nullptr;
LStrHandle LStrLF = nullptr;
LStrHandle LStrCRLF = nullptr;
LStrHandle LStrTab = nullptr;
LStrHandle LStrEmpty = nullptr;
Path EmptyPathValue = nullptr;
Path NotAPathValue = nullptr;
uint32_t FloatInfinity = 0x7F800000u;
uint32_t FloatNegInfinity = 0xFF800000u;
uint64_t DoubleInfinity = 0x7FF0000000000000ull;
uint64_t DoubleNegInfinity = 0xFFF0000000000000ull;
uint64_t DoubleNaN = 0xFFFFFFFFFFFFFFFFull;
char SystemDecimalMark = '.';
int32_t RandomSeed[3] = {0, 0, 0};

}  // extern "C"
