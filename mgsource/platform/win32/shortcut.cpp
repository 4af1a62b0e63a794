// Shortcut files and universal names on Windows hosts, through the shell's link object and
// the network provider. COM is the host process's to start: without it creating the link
// object fails, and every shortcut stays an ordinary file.
#include <objbase.h>
#include <objidl.h>
#include <shobjidl.h>
#include <string.h>
#include <windows.h>
#include <winnetwk.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {
namespace {

constexpr int kNameSize = 260;

// The published identities, spelled out so that no import library of them is needed.
const CLSID kShellLink = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID kShellLinkA = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID kPersistFile = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

}  // namespace

bool ResolveShortcutFile(char* name) {
    if (gFaults.shortcutResolver != nullptr) return gFaults.shortcutResolver(name);
    IShellLinkA* link = nullptr;
    IPersistFile* file = nullptr;
    bool resolved = false;
    HRESULT hr = CoCreateInstance(kShellLink, nullptr, CLSCTX_INPROC_SERVER, kShellLinkA,
                                  reinterpret_cast<void**>(&link));
    if (SUCCEEDED(hr)) hr = link->QueryInterface(kPersistFile, reinterpret_cast<void**>(&file));
    WCHAR wide[kNameSize];
    if (SUCCEEDED(hr) && MultiByteToWideChar(CP_ACP, 0, name, -1, wide, kNameSize) == 0)
        hr = E_FAIL;
    if (SUCCEEDED(hr)) hr = file->Load(wide, 0);
    if (SUCCEEDED(hr)) hr = link->Resolve(nullptr, SLR_NO_UI);
    char target[kNameSize] = {};  // GetPath may succeed (S_FALSE) without writing a path
    WIN32_FIND_DATAA data;
    if (SUCCEEDED(hr)) hr = link->GetPath(target, kNameSize, &data, 0);
    if (SUCCEEDED(hr) && target[0] != 0) {
        strcpy(name, target);
        resolved = true;
    }
    if (file != nullptr) file->Release();
    if (link != nullptr) link->Release();
    return resolved;
}

uint32_t UniversalNameSize(const char* name) {
    DWORD size = 0;
    WNetGetUniversalNameA(name, UNIVERSAL_NAME_INFO_LEVEL, nullptr, &size);
    return size;
}

bool UniversalName(const char* name, void* buffer, uint32_t size, const char** text) {
    DWORD n = size;
    *text = nullptr;
    if (WNetGetUniversalNameA(name, UNIVERSAL_NAME_INFO_LEVEL, buffer, &n) != NO_ERROR)
        return false;
    *text = static_cast<UNIVERSAL_NAME_INFOA*>(buffer)->lpUniversalName;
    return true;
}

}  // namespace plat
