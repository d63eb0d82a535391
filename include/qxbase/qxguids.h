// Exported identifier constants of the interfaces, classes, options and media
// types shared by every module built on this component runtime.
#ifndef QXBASE_QXGUIDS_H
#define QXBASE_QXGUIDS_H

#include <qxbase/qxdefs.h>

extern "C" {
QXBASE_API extern const GUID IID_IUnknown;
QXBASE_API extern const GUID IID_IClassFactory;
QXBASE_API extern const GUID GUID_NULL;
QXBASE_API extern const GUID CLSID_QxcBufferEngine;
QXBASE_API extern const GUID CLSID_QxcSyncBufferEngine;
QXBASE_API extern const GUID IID_IQxcBufferEngine;
QXBASE_API extern const GUID IID_IQxSyncBufferEngine;
QXBASE_API extern const GUID IID_IQxcBufferEngineFactory;
QXBASE_API extern const GUID IID_IQxcSyncBufferEngineFactory;
QXBASE_API extern const GUID CLSID_QxThreadPoolManager;
QXBASE_API extern const GUID IID_IQxThreadPoolManager;
QXBASE_API extern const GUID IID_IQxSurface;
QXBASE_API extern const GUID IID_IQxAVContent;
QXBASE_API extern const GUID IID_IQxFlexEnginePrivate;
}

#endif  // QXBASE_QXGUIDS_H
