# What gets installed: `runtime`, one folder that is a base folder as it stands, and `sdk`, the
# contract headers with a CMake package, which is all that an outside plug-in needs.
include(CMakePackageConfigHelpers)

set(runtime_targets)
foreach(target quarda quarda-request QDEngine)
  if(TARGET ${target})
    list(APPEND runtime_targets ${target})
    install(TARGETS ${target} COMPONENT runtime
            RUNTIME DESTINATION . LIBRARY DESTINATION . NAMELINK_SKIP)
  endif()
endforeach()
if(runtime_targets)
  add_custom_target(runtime DEPENDS ${runtime_targets})
endif()

# The headers of the contract as a target of their own: the module of the same folder also carries
# what only the engine needs.
set(contract_dir ${PROJECT_SOURCE_DIR}/src/contract)
set(contract_generated_dir ${PROJECT_BINARY_DIR}/src/contract)
add_library(qd_sdk INTERFACE)
set_target_properties(qd_sdk PROPERTIES EXPORT_NAME QDIntf)
target_compile_features(qd_sdk INTERFACE cxx_std_20)
target_include_directories(qd_sdk INTERFACE $<INSTALL_INTERFACE:include/quarda>)

# The same for a plug-in, which brings its C++ runtime along and shows nothing of it: to load the
# shared one costs more at each scan than the engine itself.
set(sdk_dir ${PROJECT_SOURCE_DIR}/sdk)
set(sdk_source ${QD_BACKEND}/PluginLibrary.cpp)
set(sdk_sources ${sdk_dir}/${sdk_source})
if(WIN32)
  list(APPEND sdk_sources ${PROJECT_SOURCE_DIR}/src/platform/win32/FrameTable.h)
endif()
add_library(qd_sdk_plugin INTERFACE)
set_target_properties(qd_sdk_plugin PROPERTIES EXPORT_NAME Plugin)
target_link_libraries(qd_sdk_plugin INTERFACE $<INSTALL_INTERFACE:qd_sdk>)
target_include_directories(qd_sdk_plugin INTERFACE $<BUILD_INTERFACE:${sdk_dir}>)
target_sources(qd_sdk_plugin INTERFACE
               $<BUILD_INTERFACE:${sdk_dir}/${sdk_source}>
               $<INSTALL_INTERFACE:$<INSTALL_PREFIX>/share/quarda/PluginLibrary.cpp>)
if(WIN32)  # the entry point of 32-bit libraries would carry the size of its arguments in its name
  target_link_options(qd_sdk_plugin INTERFACE -static -Wl,--kill-at -Wl,--gc-sections)
else()
  # A library with unique symbols, which g++ makes of variables in headers, is never unloaded.
  target_compile_options(qd_sdk_plugin INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
  target_link_options(qd_sdk_plugin INTERFACE -static-libstdc++ -static-libgcc
                      -Wl,-O1 -Wl,--as-needed -Wl,--gc-sections -Wl,-Bsymbolic -Wl,--exclude-libs,ALL)
endif()

install(FILES ${contract_dir}/AnsiString.h ${contract_dir}/RefCounted.h ${contract_dir}/QDIntf.h
              ${contract_generated_dir}/QDCall.h ${sdk_dir}/PluginLibrary.h
        DESTINATION include/quarda COMPONENT sdk)
install(FILES ${sdk_sources} DESTINATION share/quarda COMPONENT sdk)
install(TARGETS qd_sdk qd_sdk_plugin EXPORT QDEngine COMPONENT sdk)
install(EXPORT QDEngine FILE QDEngineConfig.cmake NAMESPACE QDEngine::
        DESTINATION lib/cmake/QDEngine COMPONENT sdk)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QDEngineConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QDEngineConfigVersion.cmake
        DESTINATION lib/cmake/QDEngine COMPONENT sdk)
