# emeg_add_simd_kernels(TARGET PATH/KERNELS): compiles PATH/KERNELSLoops.h once for every SIMD level of
# dsp/SimdLevel.h. Only these files are compiled for more than the architecture's baseline: everything else runs on
# every machine. The loops header is included inside an unnamed namespace, so that the linker cannot merge code of
# different levels; it ends by defining `kernels`, which the function <kernels><Level>() returns.
function(emeg_add_simd_kernels target path)
  get_filename_component(Kernels ${path} NAME)
  get_filename_component(folder ${path} DIRECTORY)
  set(loops ${folder}/${Kernels}Loops.h)
  string(SUBSTRING ${Kernels} 0 1 initial)
  string(TOLOWER ${initial} initial)
  string(SUBSTRING ${Kernels} 1 -1 rest)
  set(kernels ${initial}${rest})

  set(levels "Baseline/16/")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    # Windows aligns the stack to 16 bytes, and GCC may keep wider registers there with moves that demand more (GCC bug
    # 54412). Debian's is patched not to; for any other the assembler is told to write the moves that demand nothing.
    if(WIN32)
      set(unaligned "+-Wa,-muse-unaligned-vector-move")
    endif()
    list(APPEND levels "Avx2/32/-mavx2${unaligned}" "Avx512/64/-mavx512f${unaligned}")
    target_compile_definitions(${target} PRIVATE EMEG_X86_SIMD_LEVELS)
  endif()
  foreach(entry ${levels})
    string(REPLACE "/" ";" entry "${entry}")
    list(GET entry 0 level)
    list(GET entry 1 bytes)
    list(GET entry 2 options)
    string(REPLACE "+" ";" options "${options}")
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${Kernels}${level}.cpp)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/SimdLevel.cpp.in ${file} @ONLY)
    set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS "${options}")
    target_sources(${target} PRIVATE ${file})
  endforeach()
endfunction()
