// ConvertCurrentException: whatever is in flight becomes an MXExcept, except a hardware
// fault, which goes on up.
#include <new>

#include "mg/dbgtools.h"
#include "mg/mxexcept.h"

MG_SOURCE_IDENTITY("mgsource\\mxexcept\\convert.cpp", "$Revision: 1 $");

namespace {

// The text of the silent debug site in the catch-all arm; a site prints nothing.
[[maybe_unused]] const char kUnknownSiteText[] = "Caught unknown exception";

}  // namespace

MXExcept ConvertCurrentException() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return MXExcept(MgNoMemory, "converted from std::bad_alloc", kMgSourcePath, __LINE__);
    } catch (const MXExcept& caught) {  // the result is a copy
        return caught;
    } catch (const SEH_Exception&) {
        throw;
    } catch (...) {
        return MXExcept(42, "caught unknown exception", kMgSourcePath, __LINE__);
    }
}
