# Checks who includes whom: cmake -D SOURCE_DIR=<root of the sources> -P IncludeRules.cmake

cmake_minimum_required(VERSION 3.25)

# A folder is a layer. What is not named here (App, Tools, Tests, Benchmarks) may include anything.

# The folders of ours that a layer may include.
set(folders_Models Models)
set(folders_Audio Audio Models Platform)
set(folders_Services Services Models Audio Platform)
set(folders_Platform Platform)
set(folders_ViewModels ViewModels Services Audio Models Platform)
set(folders_UI UI Models)
set(folders_Views Views UI ViewModels Models)

# Libraries in angle brackets that only some may name, and the files that may.
set(libraries Qt JSON Sound)
set(names_Qt "Q[A-Z][A-Za-z]+|Qt[A-Z][A-Za-z]+/.*|q[a-z_]+\\.h")
set(allowed_Qt "Platform/[^/]+\\.cpp" "ViewModels/.*" "UI/.*" "Views/.*")
set(names_JSON "nlohmann/.*")
set(allowed_JSON "Services/ProjectJson\\.cpp")
set(names_Sound "SDL.*")
set(allowed_Sound "Platform/[^/]+\\.cpp")

# View models know objects and signals, but no widgets.
set(qtOfViewModels "QObject|QString|QStringList|QPointer|QtGlobal|QtCore/.*")

# Platform's interfaces are for all, what implements them for those who put a program together.
set(implementations "Platform/(Posix|Qt|Sdl).*")

function(matches_any result text)
    set(${result} FALSE PARENT_SCOPE)
    foreach(pattern IN LISTS ARGN)
        if(text MATCHES "^(${pattern})$")
            set(${result} TRUE PARENT_SCOPE)
        endif()
    endforeach()
endfunction()

function(report file include why)
    message(SEND_ERROR "${file} includes ${include}: ${why}")
endfunction()

function(check_own layer file include)
    if(NOT EXISTS "${SOURCE_DIR}/${include}")
        report("${file}" "${include}" "no file of that path; paths start at the root")
        return()
    endif()
    string(REGEX REPLACE "/.*" "" folder "${include}")
    if(NOT folder IN_LIST folders_${layer})
        report("${file}" "${include}" "${layer} may only include ${folders_${layer}}")
    elseif(include MATCHES "^(${implementations})$" AND NOT layer STREQUAL "Platform")
        report("${file}" "${include}" "only programs and tests choose an implementation")
    endif()
endfunction()

function(check_library layer file include)
    foreach(library IN LISTS libraries)
        matches_any(named "${include}" "${names_${library}}")
        matches_any(allowed "${file}" ${allowed_${library}})
        if(named AND NOT allowed)
            report("${file}" "${include}" "${library} has no place here")
        endif()
    endforeach()
    matches_any(isQt "${include}" "${names_Qt}")
    matches_any(isCore "${include}" "${qtOfViewModels}")
    if(layer STREQUAL "ViewModels" AND isQt AND NOT isCore)
        report("${file}" "${include}" "view models use Qt Core only")
    endif()
endfunction()

foreach(layer Models Audio Services Platform ViewModels UI Views)
    file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}"
         "${SOURCE_DIR}/${layer}/*.h" "${SOURCE_DIR}/${layer}/*.cpp")
    foreach(file IN LISTS files)
        file(STRINGS "${SOURCE_DIR}/${file}" lines REGEX "^[ \t]*#[ \t]*include")
        foreach(line IN LISTS lines)
            if(line MATCHES "\"(.*)\"")
                check_own(${layer} "${file}" "${CMAKE_MATCH_1}")
            elseif(line MATCHES "<(.*)>")
                check_library(${layer} "${file}" "${CMAKE_MATCH_1}")
            endif()
        endforeach()
    endforeach()
endforeach()
