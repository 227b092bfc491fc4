// What check.py runs without a fuzzer: reads the documents of some folders, and writes random records and reads them
// again: decoder-check SEED COUNT FOLDER...

#include "Contents.h"
#include "Judgement.h"
#include "RandomRecords.h"
#include "Tally.h"

#include <QDirIterator>

#include <array>
#include <memory>

namespace {

/// In the order of `SecondLibrary::Document::Kind`.
constexpr std::array kinds{"document that both libraries take", "bytes that both libraries refuse",
                           "whole number beyond 64 bits", "nesting beyond 1,024"};

/// Does with each file what the fuzzer does with its inputs, under the sanitizers of this build.
void replay(Tally &tally, const QString &folder)
{
    QDirIterator files(folder, QDir::Files);
    while (files.hasNext()) {
        const QString name = files.next();
        const QByteArray read = contents(name);
        // A copy without a byte of room, so that reading beyond the end is seen.
        const auto exact = std::make_unique<char[]>(std::size_t(read.size()));
        std::copy(read.begin(), read.end(), exact.get());
        const QByteArrayView bytes(exact.get(), read.size());
        const auto document = SecondLibrary::parse(bytes);
        const QByteArray wrong = judge(bytes, document);
        tally.note(kinds[std::size_t(document.kind)], wrong.isEmpty(), name.toUtf8() + ": " + wrong);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3)
        return EXIT_FAILURE;
    Tally tally;
    tryRandomRecords(tally, QByteArray(argv[1]).toULongLong(), QByteArray(argv[2]).toInt());
    for (int index = 3; index < argc; ++index)
        replay(tally, QFile::decodeName(argv[index]));
    return tally.finish();
}
