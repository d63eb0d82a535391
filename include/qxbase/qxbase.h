// The whole public interface of libqxbase: an application includes this
// header and links with -lqxbase.
#ifndef QXBASE_QXBASE_H
#define QXBASE_QXBASE_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxguids.h>
#include <qxbase/qxunknown.h>
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxregistry.h>
#include <qxbase/qxinifile.h>
#include <qxbase/qxenums.h>
#include <qxbase/qxdescriptions.h>
#include <qxbase/qxinterfaces.h>
#include <qxbase/qxcgenericcopy.h>
#include <qxbase/qxcrotate.h>
#include <qxbase/qxccombineextract.h>
#include <qxbase/qxchostsurface.h>
#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxcengines.h>
#include <qxbase/qxcbufferenginecommon.h>
#include <qxbase/qxcsurface.h>
#include <qxbase/qxcblocksurfaces.h>
#include <qxbase/qxcbuffersurfaces.h>
#include <qxbase/qxcsurfacefactory.h>
#include <qxbase/qxhelper.h>
#include <qxbase/qxflexenginehelper.h>
#include <qxbase/qxunnamedevent.h>
#include <qxbase/qxsyncprimitives.h>
#include <qxbase/qxsync.h>
#include <qxbase/qxperftimer.h>
#include <qxbase/qxworkqueue.h>
#include <qxbase/qxthread.h>

#endif  // QXBASE_QXBASE_H
