// Entry of mxsbutil: the exit status is the result of the run.
#include "mg/dbgtools.h"
#include "mxsbutil/options.h"

int main(int argc, char** argv) {
    SetApplicationName(argv[0]);
    return ParseArguments(argc, argv);
}
