# Sources that are compiled with Microsoft's C++ ABI, beside the MinGW compiler that builds everything else. CMake knows
# one compiler per language, so these have commands of their own.

find_program(EMEG_CLANG NAMES clang++-14 clang++)
if(NOT EMEG_CLANG)
  message(FATAL_ERROR "The Windows plug-in's class shell needs clang++ (Debian package clang)")
endif()

# No standard headers, no exceptions; unwind data, so that a host's exception finds its way through these frames.
set(EMEG_MICROSOFT_ABI_OPTIONS
  --target=x86_64-pc-windows-msvc -std=c++20 -O2 -Wall -Wextra -Wshadow -Wold-style-cast -Werror
  -ffreestanding -nostdinc -fno-exceptions -funwind-tables -fno-threadsafe-statics -fno-stack-protector -fno-addrsig)

# emeg_microsoft_abi_object(VARIABLE SOURCE options...): compiles SOURCE and puts the object's path into VARIABLE.
function(emeg_microsoft_abi_object variable source)
  get_filename_component(name ${source} NAME_WE)
  set(input ${CMAKE_CURRENT_SOURCE_DIR}/${source})
  set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}.obj)
  add_custom_command(OUTPUT ${object}
    COMMAND ${EMEG_CLANG} ${EMEG_MICROSOFT_ABI_OPTIONS} ${ARGN} -I${CMAKE_SOURCE_DIR}
      -MD -MT ${object} -MF ${object}.d -c ${input} -o ${object}
    DEPENDS ${input}
    DEPFILE ${object}.d
    COMMENT "Compiling ${source} with Microsoft's C++ ABI"
    VERBATIM)
  set_source_files_properties(${object} PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
  set(${variable} ${object} PARENT_SCOPE)
endfunction()
