#pragma once

/// One complete run of the plug-in: 1 when it did its work, 0 otherwise. No exception leaves it. Plain C, so
/// that the class shell in front of it can be built by another compiler.
extern "C" int emegRunPlugin();
