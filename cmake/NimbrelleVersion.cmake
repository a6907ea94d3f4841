# SPDX-License-Identifier: MIT
# The version of the project is that of its public header, which clients read as macros.
set(header ${CMAKE_CURRENT_SOURCE_DIR}/include/VekVersion.h)
foreach(part IN ITEMS MAJOR MINOR PATCH STRING)
    file(STRINGS ${header} line REGEX "define NIMBRELLE_VERSION_${part} ")
    string(REGEX REPLACE ".*_${part} \"?([0-9.]+)\"?$" "\\1" ${part} "${line}")
endforeach()
set(NIMBRELLE_VERSION ${MAJOR}.${MINOR}.${PATCH})
if(NOT STRING STREQUAL NIMBRELLE_VERSION)
    message(FATAL_ERROR "${header}: \"${STRING}\" is not ${NIMBRELLE_VERSION}")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
