# The same scenarios by the program for WebAssembly, in Node: whatever the native one of the release build
# gives, that one has to give as well.

set(kit_program ${ORVANEL_NATIVE_DIR}/bin/orvanel42-kit)
file(GLOB misses CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/misses/*.scn)
foreach(scenario ${scenarios} ${misses})
    get_filename_component(folder ${scenario} DIRECTORY)
    get_filename_component(group ${folder} NAME)
    get_filename_component(name ${scenario} NAME_WE)
    get_filename_component(file ${scenario} NAME)
    scenario_options(options ${scenario})
    add_test(NAME web.${group}.${name}
        COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/same.sh ${PROJECT_BINARY_DIR}/same/${group}.${name}
            ${ORVANEL_NATIVE_DIR}/bin/orvanel42-headless $<TARGET_FILE:orvanel42-headless> ${options} ${file}
        WORKING_DIRECTORY ${folder})
    set_tests_properties(web.${group}.${name} PROPERTIES TIMEOUT 600 LABELS web)
endforeach()
add_custom_target(scenario_kits ALL DEPENDS ${images})
