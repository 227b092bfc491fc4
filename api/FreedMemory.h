#pragma once

/// Returns freed memory to the system if the platform's allocator would keep it. Call it after freeing something
/// large; it takes some milliseconds.
void returnFreedMemory();
