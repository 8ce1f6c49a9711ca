#include "common/frameworksdk/frameworkcomponent.h"

// In the module the entry file defines the table. This program makes its objects itself and has no entry file.
ComponentObject g_ComponentTemplates[] = {{nullptr, nullptr, nullptr, nullptr}};
uint32_t g_cComponentTemplates = 1;
