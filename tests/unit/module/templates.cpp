#include "common/frameworksdk/frameworkcomponent.h"

// The module's entry defines the table; this program has no entry and makes its objects itself.
ComponentObject g_ComponentTemplates[] = {{nullptr, nullptr, nullptr, nullptr}};
uint32_t g_cComponentTemplates = 1;
