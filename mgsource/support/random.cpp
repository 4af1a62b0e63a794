// The three-part random generator and its seeds.
#include <math.h>

#include "mg/dbgtools.h"
#include "mg/support.h"

MG_SOURCE_IDENTITY("mgsource\\support\\random.cpp", "$Revision: 1 $");

namespace {
SeedSourceProc gSeedSource = nullptr;
}

extern "C" {

int32_t SeedSource(void) {
    return gSeedSource ? gSeedSource() : 1;
}

void SetSeedSource(SeedSourceProc source) {
    gSeedSource = source;
}

MgStatus RandomInitSeeds(void) {
    int32_t v = SeedSource() & 0x3FFF;
    if (v == 0) v = 1234;
    RandomSeed[0] = v;
    RandomSeed[1] = RandomSeed[0] * 8191 % 16384;
    RandomSeed[2] = RandomSeed[1] * 8191 % 16384;
    return MgNoError;
}

double* RandomUnit(double* result) {
    // Each product stays below 2^31: seeds are below their moduli, or below 16384 at first.
    RandomSeed[0] = RandomSeed[0] * 171 % 30269;
    RandomSeed[1] = RandomSeed[1] * 172 % 30307;
    RandomSeed[2] = RandomSeed[2] * 170 % 30323;
    double sum = RandomSeed[0] * (1.0 / 30269.0) + RandomSeed[1] * (1.0 / 30307.0) +
                 RandomSeed[2] * (1.0 / 30323.0);
    double fraction = sum - floor(sum);
    if (fraction < 0) MG_FAIL();
    *result = fraction;
    return result;
}

}  // extern "C"
