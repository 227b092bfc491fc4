// A server that answers every GET with the given number of bytes: bench_constant BYTES. Prints its port.

#include <httplib.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    httplib::Server server;
    const std::string body(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 0, 'a');
    server.Get(".*", [&](const httplib::Request &, httplib::Response &response) {
        response.set_content(body, "application/json");
    });
    // One request per connection, like the demo service.
    server.set_keep_alive_max_count(1);
    std::printf("%d\n", server.bind_to_any_port("127.0.0.1"));
    std::fflush(stdout);
    return server.listen_after_bind() ? EXIT_SUCCESS : EXIT_FAILURE;
}
