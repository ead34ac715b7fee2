#pragma once

/// function(context); 1 when it returned, 0 when a C++ exception of a program built with Microsoft's compiler
/// left it. Such an exception would pass MinGW's frames without running a destructor or stopping at a catch.
/// Other structured exceptions (access violations and the like) pass.
extern "C" int emegGuardedCall(void (*function)(const void* context), const void* context);
