#pragma once

/// Gives memory that was freed back to the system, where the platform's allocator keeps it otherwise. To be called
/// after something large has gone; it takes some milliseconds then.
void returnFreedMemory();
