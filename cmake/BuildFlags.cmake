# Flags of every target of this project: vek_target(NAME) applies them.
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)
find_package(Threads REQUIRED)

add_library(vek-build-flags INTERFACE)
target_compile_features(vek-build-flags INTERFACE cxx_std_17)
target_compile_options(vek-build-flags INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wundef -Wformat=2 -Wmissing-declarations
  $<$<BOOL:${VEK_IPMI_WERROR}>:-Werror>
  -fno-omit-frame-pointer -fstack-protector-strong)
target_link_options(vek-build-flags INTERFACE
  -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
target_link_libraries(vek-build-flags INTERFACE Threads::Threads)

if(VEK_IPMI_SANITIZE)
  target_compile_options(vek-build-flags INTERFACE
    -fsanitize=${VEK_IPMI_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(vek-build-flags INTERFACE
    -fsanitize=${VEK_IPMI_SANITIZE}
    # A preloaded library needs the runtime that its host process has.
    # libFuzzer brings it along statically.
    $<$<AND:$<CXX_COMPILER_ID:Clang>,$<NOT:$<BOOL:${VEK_IPMI_FUZZ}>>>:-shared-libsan>)
else()
  # _FORTIFY_SOURCE needs an optimising build, and hides from sanitizers
  # the calls that it wraps.
  target_compile_options(vek-build-flags INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
    $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()

function(vek_target name)
  target_link_libraries(${name} PRIVATE vek-build-flags)
endfunction()
