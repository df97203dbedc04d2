# For preset `web`: what stands in for the parts of C and C++ that Debian's libraries for WebAssembly leave
# out, and the libraries that Debian has for its own systems alone, from its source packages, which
# tools/set_up unpacks below build/sources.

set(stand_ins ${PROJECT_SOURCE_DIR}/host/platform/web/std)

# What runs on this machine is taken from there.
set(ORVANEL_NATIVE_DIR ${PROJECT_SOURCE_DIR}/build/release)

set(sources ${PROJECT_SOURCE_DIR}/build/sources)
foreach(package zlib libpng1.6 freetype)
    if(NOT EXISTS ${sources}/${package})
        message(FATAL_ERROR "the source of ${package} is missing; tools/set_up web fetches it")
    endif()
endforeach()

# orvanel_foreign(NAME FOLDER file...): a library that others have written, in C, without our warnings.
function(orvanel_foreign name folder)
    list(TRANSFORM ARGN PREPEND ${folder}/ OUTPUT_VARIABLE files)
    add_library(${name} STATIC ${files})
    target_include_directories(${name} SYSTEM PUBLIC ${folder})
    target_compile_options(${name} PRIVATE -w)
endfunction()

# longjmp is an exception of WebAssembly's here.
set(with_long_jump "SHELL:-mllvm -wasm-enable-sjlj" -mexception-handling)
add_library(orvanel_stand_ins STATIC ${stand_ins}/exceptions.cpp ${stand_ins}/filesystem.cpp ${stand_ins}/long_jump.c)
target_compile_features(orvanel_stand_ins PUBLIC cxx_std_20)
target_include_directories(orvanel_stand_ins SYSTEM PUBLIC ${stand_ins})
target_compile_options(orvanel_stand_ins
    PRIVATE -Wall -Wextra ${with_long_jump}
    PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fwasm-exceptions>
    PUBLIC -mexception-handling)
target_link_libraries(orvanel_options INTERFACE orvanel_stand_ins)
orvanel_foreign(orvanel_zlib ${sources}/zlib
    adler32.c compress.c crc32.c deflate.c inffast.c inflate.c inftrees.c trees.c uncompr.c zutil.c)
add_library(ZLIB::ZLIB ALIAS orvanel_zlib)

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/generated/png)
configure_file(${sources}/libpng1.6/scripts/pnglibconf.h.prebuilt
    ${PROJECT_BINARY_DIR}/generated/png/pnglibconf.h COPYONLY)
orvanel_foreign(orvanel_png ${sources}/libpng1.6
    png.c pngerror.c pngget.c pngmem.c pngread.c pngrio.c pngrtran.c pngrutil.c pngset.c pngtrans.c
    pngwio.c pngwrite.c pngwtran.c pngwutil.c)
target_include_directories(orvanel_png SYSTEM PUBLIC ${PROJECT_BINARY_DIR}/generated/png)
target_link_libraries(orvanel_png PUBLIC orvanel_zlib orvanel_stand_ins)
target_compile_options(orvanel_png PUBLIC ${with_long_jump})
add_library(PNG::PNG ALIAS orvanel_png)

# What a kit can name as a font: TrueType and OpenType, drawn without grays.
orvanel_foreign(orvanel_freetype ${sources}/freetype/src
    base/ftbase.c base/ftbbox.c base/ftbitmap.c base/ftdebug.c base/ftglyph.c base/ftinit.c base/ftmm.c
    base/ftsystem.c autofit/autofit.c cff/cff.c gzip/ftgzip.c psaux/psaux.c pshinter/pshinter.c psnames/psmodule.c
    raster/raster.c sfnt/sfnt.c truetype/truetype.c)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/generated/freetype/orvanel_modules.h CONTENT
"FT_USE_MODULE( FT_Module_Class, autofit_module_class )
FT_USE_MODULE( FT_Driver_ClassRec, tt_driver_class )
FT_USE_MODULE( FT_Driver_ClassRec, cff_driver_class )
FT_USE_MODULE( FT_Module_Class, psaux_module_class )
FT_USE_MODULE( FT_Module_Class, psnames_module_class )
FT_USE_MODULE( FT_Module_Class, pshinter_module_class )
FT_USE_MODULE( FT_Module_Class, sfnt_module_class )
FT_USE_MODULE( FT_Renderer_Class, ft_raster1_renderer_class )
")
target_include_directories(orvanel_freetype SYSTEM
    PUBLIC ${sources}/freetype/include
    PRIVATE ${PROJECT_BINARY_DIR}/generated/freetype)
target_compile_definitions(orvanel_freetype
    PRIVATE FT2_BUILD_LIBRARY FT_CONFIG_OPTION_SYSTEM_ZLIB FT_CONFIG_MODULES_H=<orvanel_modules.h>)
target_compile_options(orvanel_freetype PRIVATE ${with_long_jump})
target_link_libraries(orvanel_freetype PUBLIC orvanel_zlib orvanel_stand_ins)
add_library(Freetype::Freetype ALIAS orvanel_freetype)

# One thread does it all.
add_library(Threads::Threads INTERFACE IMPORTED)
