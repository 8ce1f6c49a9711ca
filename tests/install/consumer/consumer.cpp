// Opens the module that the first argument names and prints the class identifier of its first component.
#include "avcore/IZolConnection.h"
#include "common/frameworksdk/frameworkcomponent.h"
#include "common/wbaselib/wstringbase.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IUserOnline.h"

#include <cstdio>
#include <dlfcn.h>

int main(int count, char** arguments)
{
    void* module = count == 2 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    void* entry = module ? dlsym(module, "FMDll") : nullptr;
    if (!entry)
    {
        const char* reason = dlerror();
        std::fprintf(stderr, "%s\n", reason ? reason : "usage: consumer MODULE");
        return 1;
    }

    FMDllTable table{};
    table.m_Size = sizeof(table);
    ComponentObject* rows = nullptr;
    uint32_t rowCount = 0;
    if (reinterpret_cast<LPFNFMDll>(entry)(&table) != S_OK ||
        table.m_lpfnGetComponentObject(&rows, &rowCount) != S_OK || rowCount != 1)
    {
        std::fprintf(stderr, "the module does not show its component\n");
        return 1;
    }

    // The text goes through the platform's own container, which needs the installed library.
    const CLSID& id = *rows[0].m_ClsID;
    char text[40];
    std::snprintf(text, sizeof(text), "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", id.Data1, id.Data2,
                  id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6],
                  id.Data4[7]);
    WBASELIB::TStringBase<char> line(text);
    std::printf("%s\n", line.c_str());
    return id == onlinemanager::CLSID_OnlineManager ? 0 : 1;
}
