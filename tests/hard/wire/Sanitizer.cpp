#if defined(__SANITIZE_ADDRESS__)
// Freed blocks that the sanitizer keeps would count as memory of the client.
extern "C" const char *__asan_default_options() // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
{
    return "quarantine_size_mb=1:allocator_release_to_os_interval_ms=0";
}
#endif
