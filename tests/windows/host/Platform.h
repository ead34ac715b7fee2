#pragma once

// What these programs use of Windows and of its C library, declared by hand: they are compiled without
// standard headers.

extern "C" {
__declspec(dllimport) void* __stdcall LoadLibraryA(const char* path);
__declspec(dllimport) int __stdcall FreeLibrary(void* module);
__declspec(dllimport) void* __stdcall GetProcAddress(void* module, const char* name);
__declspec(dllimport) unsigned long __stdcall GetLastError();
[[noreturn]] __declspec(dllimport) void __stdcall ExitProcess(unsigned int status);
__declspec(dllimport) void __stdcall RaiseException(unsigned long code, unsigned long flags,
                                                    unsigned long count, const unsigned long long* arguments);
__declspec(dllimport) unsigned long __stdcall GetFileAttributesA(const char* path);

int printf(const char* format, ...);
int fflush(void* stream);
int atoi(const char* text);
char* strcpy(char* to, const char* from);
const char* strstr(const char* text, const char* part);
int strcmp(const char* a, const char* b);
int strncmp(const char* a, const char* b, unsigned long long count);
unsigned long long strlen(const char* text);
int __getmainargs(int* argc, char*** argv, char*** environment, int expandWildcards, void* startInfo);
}
