#include "Judgement.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What a fuzzer calls with each of its inputs; ends the process when something is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const QByteArray wrong = judge(bytes, SecondLibrary::parse(bytes));
    if (!wrong.isEmpty()) {
        std::fprintf(stderr, "%s\n", wrong.constData());
        std::abort();
    }
    return 0;
}
