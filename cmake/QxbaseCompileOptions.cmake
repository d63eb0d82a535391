# Compiler settings shared by every target of the tree.

option(QXBASE_WERROR "Treat compiler warnings as errors" ON)

add_library(qxbase_warnings INTERFACE)
target_compile_options(qxbase_warnings INTERFACE -Wall -Wextra)
if(QXBASE_WERROR)
  target_compile_options(qxbase_warnings INTERFACE -Werror)
endif()

# x86-64 always has SSE2; the one kernel that needs SSE4.1 asks for it with a
# target attribute, so the baseline stays SSE2.
add_compile_options(-msse2)

# Prefer lld where the compiler has it: gold floods sanitizer links with
# warnings about the runtime's local symbols and is slower.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS -fuse-ld=lld)
check_cxx_source_compiles("int main() { return 0; }" QXBASE_HAVE_LLD)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(QXBASE_HAVE_LLD)
  add_link_options(-fuse-ld=lld)
endif()

if(QXBASE_SANITIZE)
  string(REPLACE "," ";" _qx_san_list "${QXBASE_SANITIZE}")
  set(_qx_san_link "${QXBASE_SANITIZE}")
  if("undefined" IN_LIST _qx_san_list)
    # The compiler's "undefined" group leaves out the dynamic-type check;
    # a pointer cast to a class the object does not have is exactly the
    # kind of fault the surface tree invites, so it is asked for by name.
    set(_qx_san_link "${_qx_san_link},vptr")
  endif()
  set(_qx_san_flags "-fsanitize=${_qx_san_link}" -fno-omit-frame-pointer -g)
  if("undefined" IN_LIST _qx_san_list)
    # A UBSan finding must fail the test, not scroll past.
    list(APPEND _qx_san_flags -fno-sanitize-recover=undefined,vptr
         "-fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitize-ignorelist.txt")
  endif()
  add_compile_options(${_qx_san_flags})
  add_link_options("-fsanitize=${_qx_san_link}")
  set(QXBASE_SANITIZER_BUILD ON)
  # Modules and tests are shared objects loaded into sanitized processes;
  # an instrumented shared object must not insist on resolving every symbol
  # at link time against a runtime that only the executable carries.
  set(QXBASE_NO_UNDEFINED_FLAG "")
else()
  set(QXBASE_SANITIZER_BUILD OFF)
  set(QXBASE_NO_UNDEFINED_FLAG "LINKER:--no-undefined")
endif()
