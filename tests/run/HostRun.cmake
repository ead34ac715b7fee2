# emeg_host_run: runs a plug-in in the stand-in host and reads what it left behind. May be included by several folders.

# Imported targets belong to the folder that looked for them.
find_package(nlohmann_json REQUIRED)

if(TARGET lumetra AND NOT TARGET emeg_host_run)
  add_library(emeg_host_run STATIC ${CMAKE_CURRENT_LIST_DIR}/ChildProcess.cpp ${CMAKE_CURRENT_LIST_DIR}/HostRun.cpp)
  target_link_libraries(emeg_host_run PUBLIC nlohmann_json::nlohmann_json)
  target_compile_definitions(emeg_host_run PRIVATE EMEG_LUMETRA_PROGRAM="$<TARGET_FILE:lumetra>")
  add_dependencies(emeg_host_run lumetra)
endif()
