// libqxbase's own class table: the library is a component module like any
// other, and its entry points (from the module kit) walk this table. Its
// classes are the two buffer-engine factories.
#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxclassfactory.h>

extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {L"QueltoVideo Host Buffer Engine", &CLSID_QxcBufferEngine, CQxcBufferEngineFactory::CreateInstance, nullptr,
     nullptr},
    {L"QueltoVideo Synchronous Host Buffer Engine", &CLSID_QxcSyncBufferEngine,
     CQxcSyncBufferEngineFactory::CreateInstance, nullptr, nullptr},
};

extern "C" int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);
