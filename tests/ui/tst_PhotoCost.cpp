#include "MarovendaTest.h"
#include "PhotoCost.h"

#include <QtEndian>
#include <QTest>

namespace {

template <typename Number>
QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof number, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

/// A marker with its segment.
QByteArray segment(int marker, const QByteArray &contents)
{
    return QByteArray("\xFF") + char(marker) + bigEndian(quint16(contents.size() + 2)) + contents;
}

QByteArray frame(int marker, quint16 height, quint16 width, const QByteArray &samplings)
{
    QByteArray contents = QByteArray(1, '\x08') + bigEndian(height) + bigEndian(width) + char(samplings.size());
    for (const char sampling : samplings)
        contents += QByteArray("c") + sampling + 't';
    return segment(marker, contents);
}

QByteArray scan(int components) { return segment(0xDA, QByteArray(1, char(components)) + "table") + "data"; }

QByteArray chunk(const QByteArray &type, const QByteArray &contents)
{
    QByteArray length(4, '\0');
    qToLittleEndian(quint32(contents.size()), length.data());
    return type + length + contents + QByteArray(contents.size() % 2, '\0');
}

const QByteArray start("\xFF\xD8");
const QByteArray end("\xFF\xD9");
const QByteArray grey("\x11");
const QByteArray color("\x22\x11\x11");
/// The samples of a frame of 100 x 50, whose blocks may reach 64 beyond it.
constexpr qint64 area = qint64(164) * 114;

} // namespace

/// The estimates, which are made before anything is decoded.
class PhotoCostTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void jpegScansAndCoefficients_data();
    void jpegScansAndCoefficients();
    void jpegSegmentsThatAreLeftOut_data();
    void jpegSegmentsThatAreLeftOut();
    void jpegCopyIsBoundedByItsMemory();
    void webpChunks_data();
    void webpChunks();
    void gifCanvas();
};

void PhotoCostTest::jpegScansAndCoefficients_data()
{
    const auto row = columns<QByteArray, int, qint64>("bytes", "scans", "coefficients");
    const QByteArray one = frame(0xC0, 50, 100, grey);
    const QByteArray three = frame(0xC0, 50, 100, color);
    row("nothing", "", 0, 0);
    row("one component in one scan", start + one + scan(1) + end, 1, 0);
    row("three in one scan", start + three + scan(3) + end, 1, 0);
    row("three in two scans", start + three + scan(2) + scan(1) + end, 2, 2 * area * 6 / 4);
    row("a scan for one of three", start + three + scan(1) + end, 1, 2 * area * 6 / 4);
    row("as many scans, of all components", start + one + scan(1) + scan(1) + end, 2, 2 * area);
    row("two frames", start + one + three + scan(1) + scan(2) + end, 2, 2 * area + 2 * area * 6 / 4);
    row("a side that is sampled thrice", start + frame(0xC0, 50, 100, "\x31\x12") + scan(1) + end, 1,
        2 * area * 5 / 3);
    for (const int progressive : {0xC2, 0xC6, 0xCA, 0xCE})
        row(QByteArray::number(progressive, 16), start + frame(progressive, 50, 100, grey) + scan(1) + end, 1,
            2 * area);
    for (const int sequential : {0xC1, 0xC3, 0xC5, 0xC7, 0xC9, 0xCB, 0xCD, 0xCF})
        row(QByteArray::number(sequential, 16), start + frame(sequential, 50, 100, grey) + scan(1) + end, 1, 0);
    // Tables and the like, of markers between those of frames: the components of the frame stay.
    for (const int other : {0xC4, 0xC8, 0xCC, 0xDB, 0xD0 + 13})
        row(QByteArray::number(other, 16), start + three + segment(other, QByteArray(9, 7)) + scan(3) + end, 1, 0);
    row("a frame that is too short", start + segment(0xC2, "12345") + scan(0) + end, 1, 0);
    row("a frame without components", start + segment(0xC2, QByteArray("\x08\0\x32\0\x64\0", 6)) + scan(0) + end, 1,
        0);
    row("an incomplete component", start + segment(0xC2, QByteArray("\x08\0\x32\0\x64\1c\x11", 8)) + scan(1) + end, 1,
        0);
    row("a scan without contents", start + one + segment(0xDA, "") + end, 0, 0);
    row("a second frame that is too short",
        start + one + segment(0xC0, QByteArray("\x08\0\x32\0\x64\3", 6)) + scan(3), 1, 0);
    row("a scan before its frame", start + scan(1) + one + end, 1, 2 * area);
    row("after the end", start + one + scan(1) + end + QByteArray("\0\2", 2) + scan(1), 1, 0);
    row("a fill byte", start + one + "\xFF" + scan(1) + end, 1, 0);
    row("two fill bytes", start + one + "\xFF\xFF" + scan(1) + end, 1, 0);
    for (const char marker : {'\x00', '\x01', '\xBF', '\xD0', '\xD7', '\xD8'}) {
        const QByteArray within = QByteArray("\xFF") + marker;
        row("in the data: " + within.toHex(), start + one + scan(1) + within + scan(1) + end, 2, 2 * area);
    }
    row("a length of 1", start + one + scan(1) + QByteArray("\xFF\xE0\0\1", 4) + scan(1), 1, 0);
    row("a length of 2", start + one + scan(1) + QByteArray("\xFF\xE0\0\2", 4) + scan(1), 2, 2 * area);
    row("up to the last byte", start + one + scan(1).chopped(4), 1, 0);
    row("one byte less", start + one + scan(1).chopped(5), 0, 0);
    row("a marker alone", start + one + scan(1) + "\xFF\xDA" + QByteArray(1, '\0'), 1, 0);
}

void PhotoCostTest::jpegScansAndCoefficients()
{
    QFETCH(const QByteArray, bytes);
    const JpegOutline outline = jpegOutlineOf(bytes, 1000);
    QTEST(outline.scans, "scans");
    QTEST(outline.coefficientBytes, "coefficients");
    QCOMPARE(outline.bytes, bytes);
}

void PhotoCostTest::jpegSegmentsThatAreLeftOut_data()
{
    const auto row = columns<QByteArray, QByteArray>("bytes", "kept");
    const QByteArray picture = frame(0xC0, 50, 100, grey) + scan(1) + end;
    const auto notes = [](int marker, int count, const QByteArray &text) {
        return segment(marker, text).repeated(count);
    };
    const QByteArray exif = segment(0xE1, "Exif turned");
    const QByteArray few = start + notes(0xFE, 499, "few") + picture;
    row("few comments", few, few);
    row("many comments", start + notes(0xFE, 500, "many") + picture, start + picture);
    row("profiles", start + notes(0xE2, 500, "icc") + picture, start + picture);
    row("metadata", start + notes(0xE1, 500, "xmp") + picture, start + picture);
    row("orientations", start + exif + notes(0xE1, 500, "Exif") + picture, start + exif + picture);
    row("an orientation after metadata", start + notes(0xE1, 500, "xmp") + exif + picture, start + exif + picture);
    const QByteArray others = start + notes(0xE0, 600, "other") + notes(0xED, 600, "other") + picture;
    row("others", others, others);
    const QByteArray large = notes(0xFE, 17, QByteArray(60'000, 'c'));
    const qsizetype left = (1 << 20) - large.size() - 4;
    const QByteArray less = start + large + notes(0xFE, 1, QByteArray(left - 1, 'c')) + picture;
    row("less than a mebibyte", less, less);
    row("a mebibyte", start + large + notes(0xFE, 1, QByteArray(left, 'c')) + picture, start + picture);
    const QByteArray table = segment(0xDB, "table");
    const QByteArray apart = notes(0xFE, 1, "c") + table;
    row("1000 gaps", start + apart.repeated(1000) + picture, start + table.repeated(1000) + picture);
    row("1001 gaps", start + apart.repeated(1001) + picture, "");
    row("many in each gap", start + notes(0xFE, 2000, "c") + table + notes(0xFE, 2000, "c") + picture,
        start + table + picture);
}

void PhotoCostTest::jpegSegmentsThatAreLeftOut()
{
    QFETCH(const QByteArray, bytes);
    QTEST(jpegOutlineOf(bytes, 100'000).bytes, "kept");
}

void PhotoCostTest::jpegCopyIsBoundedByItsMemory()
{
    const QByteArray bytes = start + segment(0xFE, "c").repeated(600) + scan(1) + end;
    const QByteArray kept = start + scan(1) + end;
    QCOMPARE(jpegOutlineOf(bytes, kept.size()).bytes, kept);
    QCOMPARE(jpegOutlineOf(bytes, kept.size() - 1).bytes, QByteArray());
}

void PhotoCostTest::webpChunks_data()
{
    const auto row = columns<QByteArray, int, int>("chunks", "count", "bytesPerPixel");
    row("none", "", 0, 4);
    row("lossy", chunk("VP8 ", "picture."), 1, 4);
    row("lossless", chunk("VP8L", "picture."), 1, 10);
    row("lossy with opacity", chunk("VP8X", "head") + chunk("ALPH", "alpha") + chunk("VP8 ", "picture"), 3, 10);
    row("animated", chunk("ANMF", "frame") + chunk("VP8L", "picture."), 2, 12);
    row("animated later", chunk("VP8L", "picture.") + chunk("ANMF", "frame"), 2, 12);
    row("an odd length", chunk("EXIF", "odd") + chunk("VP8L", "picture."), 2, 10);
    row("nothing in a chunk", chunk("EXIF", "") + chunk("VP8L", ""), 2, 10);
    row("one byte of a chunk is missing", chunk("EXIF", "") + chunk("VP8L", "").chopped(1), 1, 4);
    row("a length beyond the end", "EXIF\xFF\xFF\xFF\xFF" + chunk("VP8L", "picture."), 1, 4);
}

void PhotoCostTest::webpChunks()
{
    QFETCH(const QByteArray, chunks);
    QFETCH(const int, count);
    const QByteArray bytes = QByteArray("RIFF1234WEBP") + chunks;
    QCOMPARE(webpCostOf(bytes).chunkBytes, 2 * bytes.size() + 100 * count);
    QTEST(webpCostOf(bytes).bytesPerPixel, "bytesPerPixel");
}

void PhotoCostTest::gifCanvas()
{
    QCOMPARE(gifCanvasOf(QByteArray("GIF89a\x02\x01\x04\x03", 10)), QSize(0x102, 0x304));
    QCOMPARE(gifCanvasOf(QByteArray("GIF89a\x02\x01\x04", 9)), QSize());
}

MAROVENDA_TEST(PhotoCostTest)
#include "tst_PhotoCost.moc"
