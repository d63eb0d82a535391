// The rotator: quarter turns in strips of source columns on a work queue,
// half turns on the calling thread.
#include <qxbase/qxcrotate.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxworkqueue.h>

#include <limits>
#include <new>

namespace {
constexpr unsigned int kuiInfinite = 4294967295u;
}

GenericRotate::GenericRotate() : m_uiSliceSize(0), m_pWorkQueue(nullptr), m_asContexts{}
{
    // The queue's construction status is not examined: a queue without its
    // thread-pool manager still runs the strips at normal priority.
    int iResult = 0;
    m_pWorkQueue = new CQxConcurrentWorkQueue(
        [](void* in_pItem) { ConcurrencyRotateData(static_cast<RotateContext*>(in_pItem)); }, iResult,
        std::string(), std::numeric_limits<unsigned long>::max());
}

GenericRotate::~GenericRotate() { delete m_pWorkQueue; }

unsigned int GenericRotate::StripCount(unsigned int in_uiWidth) const
{
    if (m_uiSliceSize == 0) return 0;
    return in_uiWidth / m_uiSliceSize + (in_uiWidth % m_uiSliceSize != 0 ? 1 : 0);
}

HRESULT GenericRotate::Rotate(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                              unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiSourcePitch,
                              unsigned int in_uiDestinationPitch, unsigned int in_uiDegrees)
{
    if (in_uiDegrees == 180) {
        rotateYuv422To180(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiDestinationPitch);
        return S_OK;
    }
    // Fixed by the first picture and kept, so that the strips of a stream of
    // pictures stay the same whatever their widths.
    if (m_uiSliceSize == 0) m_uiSliceSize = in_uiWidth <= 1920 ? 16 : 64;
    return setupForMultiThread(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiSourcePitch,
                               in_uiDestinationPitch, in_uiDegrees);
}

HRESULT GenericRotate::setupForMultiThread(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                           unsigned int in_uiWidth, unsigned int in_uiHeight,
                                           unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                           unsigned int in_uiDegrees)
{
    if (m_uiSliceSize == 0) m_uiSliceSize = in_uiWidth <= 1920 ? 16 : 64;
    if (StripCount(in_uiWidth) > kuiMaxStrips) return QX_E_INVALID_GEOMETRY;
    const unsigned int uiCount = in_uiWidth / m_uiSliceSize;
    const unsigned int uiRemainder = in_uiWidth % m_uiSliceSize;
    auto fnQueue = [&](unsigned int in_uiIndex, unsigned int in_uiFirst, unsigned int in_uiEnd) {
        RotateContext& rs = m_asContexts[in_uiIndex];
        rs.uiWidth = in_uiWidth;
        rs.uiHeight = in_uiHeight;
        rs.uiSourcePitch = in_uiSourcePitch;
        rs.uiDestinationPitch = in_uiDestinationPitch;
        rs.uiFirstColumn = in_uiFirst;
        rs.uiEndColumn = in_uiEnd;
        rs.uiDegrees = in_uiDegrees;
        rs.pucSource = in_pucSource;
        rs.pucDestination = out_pucDestination;
        return m_pWorkQueue->QueueTask(&rs, kuiInfinite);
    };
    HRESULT hrQueued = S_OK;
    for (unsigned int i = 0; i < uiCount; ++i)
        if (HRESULT hr = fnQueue(i, i * m_uiSliceSize, (i + 1) * m_uiSliceSize)) hrQueued = hr;
    if (uiRemainder != 0)
        if (HRESULT hr = fnQueue(uiCount, uiCount * m_uiSliceSize, uiCount * m_uiSliceSize + uiRemainder))
            hrQueued = hr;
    const HRESULT hrDone = m_pWorkQueue->WaitForCompletion(kuiInfinite);
    return FAILED(hrQueued) ? hrQueued : hrDone;
}

void GenericRotate::ConcurrencyRotateData(RotateContext* in_psContext)
{
    const RotateContext& rs = *in_psContext;
    if (rs.uiDegrees == 90)
        rotateYuv422To90(rs.pucSource, rs.pucDestination, rs.uiWidth, rs.uiHeight, rs.uiSourcePitch,
                         rs.uiDestinationPitch, rs.uiFirstColumn, rs.uiEndColumn);
    else if (rs.uiDegrees == 270)
        rotateYuv422To270(rs.pucSource, rs.pucDestination, rs.uiWidth, rs.uiHeight, rs.uiSourcePitch,
                          rs.uiDestinationPitch, rs.uiFirstColumn, rs.uiEndColumn);
}

std::unique_ptr<GenericRotate> GenericRotateFactory::CreateGenericRotate()
{
    return std::unique_ptr<GenericRotate>(new GenericRotate());
}
