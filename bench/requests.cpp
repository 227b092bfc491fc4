// Measures how many GETs a server answers: bench_requests PORT PATH SECONDS. Prints the requests a second, the size
// of a body, and the number of failures.

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

int main(int argc, char *argv[])
{
    if (argc != 4)
        return EXIT_FAILURE;
    const int port = std::atoi(argv[1]);
    const std::chrono::duration<double> length(std::strtod(argv[3], nullptr));
    std::atomic<long> answered = 0;
    std::atomic<long> failed = 0;
    std::atomic<std::size_t> size = 0;
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> clients;
    for (int i = 0; i < 4; ++i) {
        clients.emplace_back([&] {
            while (std::chrono::steady_clock::now() - start < length) {
                httplib::Client client("127.0.0.1", port);
                const auto reply = client.Get(argv[2]);
                if (reply && reply->status == 200)
                    size = reply->body.size(), ++answered;
                else
                    ++failed;
            }
        });
    }
    for (std::thread &client : clients)
        client.join();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::printf("%.1f %zu %ld\n", static_cast<double>(answered) / taken.count(), size.load(), failed.load());
    return EXIT_SUCCESS;
}
