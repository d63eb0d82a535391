// Definitions shared by the block format sources: the parts of a middle and
// a leaf class that differ only in names and constants.
#ifndef QXBASE_SURFACES_BLOCKSURFACEDEFS_H
#define QXBASE_SURFACES_BLOCKSURFACEDEFS_H

#include <qxbase/qxcblocksurfaces.h>

#include "surfaces/kernels/blockmatrix.h"

// One dispatch table entry from a class's kernel list.
#define QXC_TABLE_ENTRY(Name, SourceType) ms_apfnCopyFunctions[SourceType] = &CSelf::Name;

// A middle class's dispatch table and its filling from the kernel list. The
// table is filled when the library is loaded, before any thread can make a
// surface; a constructor that runs earlier (from another static
// initializer) fills it itself, with the same values.
#define QXC_DEFINE_COPY_FUNCTION_TABLE(Class, KernelList)                                         \
    Class::PFNCopyBlocks Class::ms_apfnCopyFunctions[kiQxcSurfaceTypeCount];                      \
    bool Class::ms_bCopyFunctionTableInitialized = (InitializeCopyFunctionTable(), true);         \
    void Class::InitializeCopyFunctionTable()                                                     \
    {                                                                                             \
        typedef Class CSelf;                                                                      \
        KernelList(QXC_TABLE_ENTRY)                                                               \
        ms_bCopyFunctionTableInitialized = true;                                                  \
    }

// A middle class's table, constructor (which fills the table on first use),
// destructor and dispatching CopyBlocksFrom.
#define QXC_DEFINE_BLOCK_MIDDLE(Class, Type, BlockSize, KernelList)                               \
    QXC_DEFINE_COPY_FUNCTION_TABLE(Class, KernelList)                                             \
    Class::Class(bool in_bCachedStores) : CQxcSurface(Type, BlockSize, in_bCachedStores)          \
    {                                                                                             \
        if (!ms_bCopyFunctionTableInitialized)                                                    \
            InitializeCopyFunctionTable();                                                        \
    }                                                                                             \
    Class::~Class() = default;                                                                    \
    bool Class::CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,    \
                               unsigned int in_uiHeight)                                          \
    {                                                                                             \
        return DispatchCopyBlocks(this, ms_apfnCopyFunctions, in_pSource, in_uiWidthInBlocks,     \
                                  in_uiHeight);                                                   \
    }

// A leaf's constructor, destructor and FillBlocks through a fill kernel.
#define QXC_DEFINE_BLOCK_LEAF(Leaf, Middle, FillKernel)                                           \
    Leaf::Leaf(bool in_bCachedStores) : Middle(in_bCachedStores) {}                               \
    Leaf::~Leaf() = default;                                                                      \
    bool Leaf::FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,       \
                          unsigned int in_uiHeight)                                               \
    {                                                                                             \
        return RunFillJob(&NQxcKernels::TSse2Entry<NQxcKernels::NBlockMatrix::FillKernel>::Run,   \
                          in_rsColor, in_uiWidthInBlocks, in_uiHeight);                           \
    }

// A leaf kernel: the SSE2 instance of a named composition.
#define QXC_DEFINE_BLOCK_KERNEL(Leaf, Name, Kernel)                                               \
    QXC_BLOCK_KERNEL(Leaf::Name)                                                                  \
    {                                                                                             \
        return RunBlockJob(&NQxcKernels::TSse2Entry<NQxcKernels::NBlockMatrix::Kernel>::Run,      \
                           in_pSource, in_uiWidthInBlocks, in_uiHeight);                          \
    }


#endif  // QXBASE_SURFACES_BLOCKSURFACEDEFS_H
