# Finds libdispatch and the BlocksRuntime it needs.
#
# Hints, in order: the cache variable QXBASE_DISPATCH_ROOT (a prefix such as
# /opt/swift/usr), then a Swift toolchain for Linux under /opt/swift/usr, the
# distribution's Swift layout under /usr/lib/swift, and plain /usr.
#
# Defines Dispatch_FOUND, Dispatch::Dispatch (includes BlocksRuntime) and
# Dispatch_LIBRARY_DIRS (for RPATH).

set(QXBASE_DISPATCH_ROOT "" CACHE PATH "Prefix that holds libdispatch and BlocksRuntime")

set(_qx_dispatch_prefixes)
if(QXBASE_DISPATCH_ROOT)
  list(APPEND _qx_dispatch_prefixes "${QXBASE_DISPATCH_ROOT}")
endif()
list(APPEND _qx_dispatch_prefixes /opt/swift/usr /usr/lib/swift /usr)

set(_qx_inc_hints)
set(_qx_lib_hints)
foreach(p IN LISTS _qx_dispatch_prefixes)
  list(APPEND _qx_inc_hints "${p}/lib/swift" "${p}/include" "${p}")
  list(APPEND _qx_lib_hints "${p}/lib/swift/linux" "${p}/lib" "${p}/linux" "${p}/lib/x86_64-linux-gnu")
endforeach()

find_path(Dispatch_INCLUDE_DIR dispatch/dispatch.h HINTS ${_qx_inc_hints} NO_DEFAULT_PATH)
find_path(Dispatch_INCLUDE_DIR dispatch/dispatch.h)
find_path(Blocks_INCLUDE_DIR Block.h HINTS ${_qx_inc_hints} PATH_SUFFIXES Block NO_DEFAULT_PATH)
find_path(Blocks_INCLUDE_DIR Block.h PATH_SUFFIXES Block)
find_library(Dispatch_LIBRARY NAMES dispatch HINTS ${_qx_lib_hints} NO_DEFAULT_PATH)
find_library(Dispatch_LIBRARY NAMES dispatch)
find_library(Blocks_LIBRARY NAMES BlocksRuntime HINTS ${_qx_lib_hints} NO_DEFAULT_PATH)
find_library(Blocks_LIBRARY NAMES BlocksRuntime)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Dispatch
  REQUIRED_VARS Dispatch_LIBRARY Dispatch_INCLUDE_DIR Blocks_LIBRARY Blocks_INCLUDE_DIR)

if(Dispatch_FOUND)
  get_filename_component(_qx_dispatch_libdir "${Dispatch_LIBRARY}" DIRECTORY)
  get_filename_component(_qx_blocks_libdir "${Blocks_LIBRARY}" DIRECTORY)
  set(Dispatch_LIBRARY_DIRS "${_qx_dispatch_libdir}" "${_qx_blocks_libdir}")
  list(REMOVE_DUPLICATES Dispatch_LIBRARY_DIRS)
  if(NOT TARGET Dispatch::Blocks)
    add_library(Dispatch::Blocks UNKNOWN IMPORTED)
    set_target_properties(Dispatch::Blocks PROPERTIES
      IMPORTED_LOCATION "${Blocks_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Blocks_INCLUDE_DIR}")
  endif()
  if(NOT TARGET Dispatch::Dispatch)
    add_library(Dispatch::Dispatch UNKNOWN IMPORTED)
    set_target_properties(Dispatch::Dispatch PROPERTIES
      IMPORTED_LOCATION "${Dispatch_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Dispatch_INCLUDE_DIR}"
      INTERFACE_LINK_LIBRARIES Dispatch::Blocks)
  endif()
endif()
mark_as_advanced(Dispatch_INCLUDE_DIR Dispatch_LIBRARY Blocks_INCLUDE_DIR Blocks_LIBRARY)
