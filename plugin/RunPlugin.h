#pragma once

// What the class shell calls. On Windows another compiler builds the shell: plain C, no bool and nothing
// shorter than int, whose unused bits the two compilers need not treat alike. No exception leaves these
// functions.
extern "C" {

/// One complete run of the plug-in: 1 when it did its work, 0 otherwise.
int emegRunPlugin();

/// Memory for an object, null when there is none; given back by the object's deleting destructor.
void* emegAllocateObject(unsigned long long nrOfBytes);
void emegFreeObject(void* object);
}
