// Start-up of the text and number layer, its shared constants, random numbers and the
// version text.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Constant after SupportInit.
extern int32_t ProcessId;
extern char AMText[3];
extern int32_t AMTextLength;
extern char PMText[3];
extern int32_t PMTextLength;
extern LStrHandle LStrCR;
extern LStrHandle LStrLF;
extern LStrHandle LStrCRLF;
extern LStrHandle LStrTab;
extern LStrHandle LStrEmpty;
extern Path EmptyPathValue;
extern Path NotAPathValue;
// Bit patterns of the float specials.
extern uint32_t FloatInfinity;
extern uint32_t FloatNegInfinity;
extern uint64_t DoubleInfinity;
extern uint64_t DoubleNegInfinity;
extern uint64_t DoubleNaN;
// The decimal mark of number text; '.' unless the host asks for the user's.
extern char SystemDecimalMark;
// The three seeds of RandomUnit.
extern int32_t RandomSeed[3];

// 0, or MgNoMemory when a handle could not be made (what was made stays).
MgStatus SupportInit(void);
void SupportExit(void);

// The next value in [0, 1) of the three-part generator; returns result.
double* RandomUnit(double* result);
// The value behind the seeds: 1 unless a host installed its own source.
int32_t SeedSource(void);
typedef int32_t (*SeedSourceProc)(void);
void SetSeedSource(SeedSourceProc source);
// Sets the seeds from SeedSource; returns 0.
MgStatus RandomInitSeeds(void);

// The PStr of a packed version number, such as 1.2.3a56; returns result.
PStr VersionText(uint32_t version, PStr result);

MG_EXTERN_C_END
