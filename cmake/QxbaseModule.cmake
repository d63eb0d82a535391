# qxbase_add_module(<target> SOURCES <files...> [LIBS <libs...>])
#
# Builds a component module: a shared object whose author writes only the
# class table (g_aoTemplates / g_iTemplates) and the classes. The module kit
# is linked whole, so the module gets its own entry points, class factory,
# object counter and lock count; the version script exports only the five
# entry points and the table; -Bsymbolic binds the module's own references to
# its own definitions even though libqxbase, loaded in the same process,
# exports the same names.
#
# Available in this source tree and, after find_package(qxbase), to modules
# built outside it.

function(qxbase_add_module target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  if(CMAKE_VERSION VERSION_LESS 3.24)
    message(FATAL_ERROR "qxbase_add_module needs CMake 3.24 or newer (whole-archive linking)")
  endif()
  set(_QXBASE_MODULE_MAP "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/qxbase_module.map")
  add_library(${target} MODULE ${ARG_SOURCES})
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS "${_QXBASE_MODULE_MAP}")
  target_link_libraries(${target} PRIVATE
    "$<LINK_LIBRARY:WHOLE_ARCHIVE,qxbase::qxbase_modulekit>"
    qxbase::qxbase
    ${ARG_LIBS})
  target_link_options(${target} PRIVATE
    "LINKER:--version-script=${_QXBASE_MODULE_MAP}"
    "LINKER:-Bsymbolic")
endfunction()
