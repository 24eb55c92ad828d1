# What every target of the project shares, and how its libraries are declared.

add_library(lumo_options INTERFACE)
target_compile_options(lumo_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align)
target_compile_definitions(lumo_options INTERFACE QT_NO_KEYWORDS BOOST_BIND_GLOBAL_PLACEHOLDERS)
if(LUMO_WARNINGS_AS_ERRORS)
    target_compile_options(lumo_options INTERFACE -Werror)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A source that stands in another's place has types of its own in public ones.
    target_compile_options(lumo_options INTERFACE -Wno-subobject-linkage)
endif()
if(LUMO_SANITIZER)
    add_compile_options(-fsanitize=${LUMO_SANITIZER} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${LUMO_SANITIZER})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # reports standard headers that the sanitizers have instrumented
        target_compile_options(lumo_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

# lumo_for_quick_builds(TARGET)
# Sanitizer builds leave a target that is all templates of others and never busy unoptimised, in half the time.
function(lumo_for_quick_builds TARGET)
    if(LUMO_SANITIZER)
        target_compile_options(${TARGET} PRIVATE -O0)
    endif()
endfunction()

# lumo_shared_library(NAME SOURCES ... PUBLIC_HEADERS ...)
# A shared library of the package, exported as LumoDataMgr::NAME. Public headers are named as they are included,
# from include/.
function(lumo_shared_library NAME)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_HEADERS" ${ARGN})
    list(TRANSFORM ARG_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/)
    add_library(${NAME} SHARED ${ARG_SOURCES} ${ARG_PUBLIC_HEADERS})
    add_library(LumoDataMgr::${NAME} ALIAS ${NAME})
    set_target_properties(${NAME} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}) # before 1.0 a minor version may change the interface
    target_include_directories(${NAME}
        PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
        PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${NAME} PRIVATE $<BUILD_INTERFACE:lumo_options>)
    install(TARGETS ${NAME} EXPORT LumoDataMgrTargets)
endfunction()

# lumo_protobuf_sources(OUT FILE.proto ...)
# Generates the C++ of .proto files of the current source folder into the same place of the
# build tree and puts the sources into OUT. Generated code is not ours to warn about.
function(lumo_protobuf_sources OUT)
    set(OPTIONS -w)
    if(LUMO_SANITIZER)
        list(APPEND OPTIONS -fno-sanitize=all) # nor to check: half of a build's time
    endif()
    set(SOURCES)
    foreach(PROTO IN LISTS ARGN)
        cmake_path(REMOVE_EXTENSION PROTO OUTPUT_VARIABLE STEM)
        set(BASE ${CMAKE_CURRENT_BINARY_DIR}/${STEM}.pb)
        add_custom_command(
            OUTPUT ${BASE}.cc ${BASE}.h
            COMMAND protobuf::protoc --proto_path=${CMAKE_CURRENT_SOURCE_DIR}
                    --cpp_out=dllexport_decl=LUMO_EXPORT:${CMAKE_CURRENT_BINARY_DIR} ${PROTO}
            DEPENDS ${ARGN} # all: one may import another
            COMMENT "Generating ${STEM}.pb"
            VERBATIM)
        set_source_files_properties(${BASE}.cc PROPERTIES COMPILE_OPTIONS "${OPTIONS}")
        list(APPEND SOURCES ${BASE}.cc ${BASE}.h)
    endforeach()
    set(${OUT} ${SOURCES} PARENT_SCOPE)
endfunction()
