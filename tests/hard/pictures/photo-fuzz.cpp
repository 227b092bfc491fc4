// The fuzzer's target: of any bytes the decoder makes nothing, or a picture of the size that was asked for, and says
// nothing.

#include "PhotoDecoder.h"

#include <QCoreApplication>
#include <QtEndian>

#include <cstdint>
#include <cstdlib>
#include <zlib.h>

extern "C" {
int LLVMFuzzerInitialize(int *argc, char ***argv);
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t most);
std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most, unsigned seed);
}

int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Which finds the plugins.
    static const QCoreApplication application(*argc, *argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) { std::abort(); });
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto choice = crc32(0, data, static_cast<uInt>(size));
    const int diameter = 1 + static_cast<int>(choice % 200);
    const QImage decoded = decodePhoto(bytes, diameter, choice & 1 << 16 ? PhotoShape::Circle : PhotoShape::Square);
    if (!decoded.isNull() && decoded.size() != QSize(diameter, diameter))
        std::abort();
    return 0;
}

/// Makes the checksums of a PNG right again: with wrong ones nearly all damage would end at the first chunk.
static void repairChecksums(std::uint8_t *png, std::size_t size)
{
    constexpr std::size_t overhead = 12; // length, type and checksum
    for (std::size_t at = 8; at + overhead <= size;) {
        const std::size_t length = qFromBigEndian<quint32>(png + at);
        if (length > size - at - overhead)
            break;
        const auto sum = crc32(0, png + at + 4, static_cast<uInt>(length + 4));
        qToBigEndian(static_cast<quint32>(sum), png + at + 8 + length);
        at += overhead + length;
    }
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most, unsigned seed)
{
    const std::size_t changed = LLVMFuzzerMutate(data, size, most);
    if (seed % 4 > 0 && changed > 8 && data[0] == 0x89)
        repairChecksums(data, changed);
    return changed;
}
