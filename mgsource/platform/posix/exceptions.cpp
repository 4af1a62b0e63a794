// The runtime's allocation-failure handler and hardware-fault translation on POSIX hosts.
#include "platform/platform.h"

namespace plat {

// The C++ runtime here has only std::set_new_handler, whose handler takes no size; the
// library's own operator new calls its handler directly, so nothing is registered.
SizedNewHandler SetRuntimeNewHandler(SizedNewHandler) {
    return nullptr;
}

// A signal handler may not throw in portable C++: there is no translator to install.
bool InstallFaultTranslator(FaultTranslator) {
    return false;
}

}  // namespace plat
