// The engine's byte mover for copies that need no pixel conversion: whole
// buffers, rectangles of lines with different pitches, and the weaving of two
// separately stored fields into one interleaved frame.
#ifndef QXBASE_QXCGENERICCOPY_H
#define QXBASE_QXCGENERICCOPY_H

#include <qxbase/qxdefs.h>

class QXBASE_API CQxcGenericCopy {
public:
    virtual ~CQxcGenericCopy();

    // Streaming copy of size bytes. Both addresses must be 16-byte aligned
    // and size a multiple of 16; the two GenericCopy operations make sure of
    // it before they call this one.
    virtual bool FastCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize) = 0;

    // size bytes from source to destination: the streaming copy when size
    // and both addresses are multiples of 16, the library copy otherwise.
    bool GenericCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize);

    // lineCount lines of lineBytes each. Pitches may be negative (a
    // bottom-up picture). The streaming copy is used only when both
    // addresses, both pitches and lineBytes are multiples of 16.
    bool GenericCopy(unsigned char* in_pucSource, int in_iSourcePitch,
                     unsigned char* out_pucDestination, int in_iDestinationPitch,
                     unsigned int in_uiLineBytes, unsigned int in_uiLineCount);

    // Weaves two fields into one frame: even destination lines from the
    // first source when in_bFirstSourceOnEvenLines is true (else from the
    // second), odd lines from the other. frameLines / 2 line pairs are
    // written; an odd last frame line is not.
    bool GenericCopyInterlace(unsigned char* in_pucFirstSource, int in_iFirstPitch,
                              unsigned char* in_pucSecondSource, int in_iSecondPitch,
                              unsigned char* out_pucDestination, int in_iDestinationPitch,
                              unsigned int in_uiLineBytes, unsigned int in_uiFrameLines,
                              bool in_bFirstSourceOnEvenLines);
};

// Video frames are far larger than the cache: each 4 KiB block of the source
// is first read once so that it is in the cache, then copied with stores
// that go around the cache.
class QXBASE_API CQxcGenericCopySSE2 : public CQxcGenericCopy {
public:
    ~CQxcGenericCopySSE2() override;
    bool FastCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize) override;
};

class QXBASE_API CQxcGenericCopyFactory {
public:
    // A new copier, owned by the caller (delete through the base class).
    static CQxcGenericCopy* CreateGenericCopy();
};

#endif  // QXBASE_QXCGENERICCOPY_H
