# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0

# In a cross-build Qt's own CMake files would take the device's code generators, which this machine
# cannot run. They leave alone those that are there already, so the host's are named first.
foreach(tool moc rcc uic)
    find_program(VIEWER_HOST_${tool} ${tool} HINTS /usr/lib/qt5/bin NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    add_executable(Qt5::${tool} IMPORTED)
    set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${VIEWER_HOST_${tool}})
    mark_as_advanced(VIEWER_HOST_${tool})
endforeach()
