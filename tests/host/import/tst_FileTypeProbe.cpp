#include "host/import/CompoundFile.h"
#include "host/import/FileTypeProbe.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using tnCADFileTypes::FileType;

namespace {

constexpr quint32 freeSector = 0xFFFFFFFF;
constexpr quint32 endOfChain = 0xFFFFFFFE;

template <typename Integer>
void put(QByteArray &bytes, int offset, Integer value)
{
    qToLittleEndian(value, bytes.data() + offset);
}

/// A compound file of 512-byte sectors: the directory lies in the given chain, four entries to the
/// sector, the allocation table in sector 0.
QByteArray compoundFile(const QStringList &names, const QVector<quint32> &chain)
{
    QByteArray bytes(512, '\0');
    bytes.replace(0, 8, CompoundFile::signature());
    put<quint16>(bytes, 26, 3);
    put<quint16>(bytes, 28, 0xFFFE);
    put<quint16>(bytes, 30, 9);
    put<quint32>(bytes, 44, 1);
    put<quint32>(bytes, 48, chain.first());
    put<quint32>(bytes, 68, endOfChain);
    for (int i = 0; i < 109; ++i)
        put<quint32>(bytes, 76 + 4 * i, i == 0 ? 0 : freeSector);

    const quint32 last = *std::max_element(chain.begin(), chain.end());
    bytes.append(int(last + 1) * 512, '\0');
    for (int i = 0; i < 128; ++i)
        put<quint32>(bytes, 512 + 4 * i, freeSector);
    for (int i = 0; i < chain.size(); ++i)
        put<quint32>(bytes, 512 + 4 * int(chain[i]), chain.value(i + 1, endOfChain));
    for (int i = 0; i < names.size(); ++i) {
        const int at = 512 * (int(chain.value(i / 4)) + 1) + 128 * (i % 4);
        for (int c = 0; c < names[i].size(); ++c)
            put<quint16>(bytes, at + 2 * c, names[i][c].unicode());
        put<quint16>(bytes, at + 64, quint16(2 * names[i].size() + 2));
        bytes[at + 66] = char(i == 0 ? 5 : 1 + i % 2);
    }
    return bytes;
}

} // namespace

class tst_FileTypeProbe : public QObject {
    Q_OBJECT

private slots:
    void tellsByName_data();
    void tellsByName();
    void tellsSharedSuffixesByContent_data();
    void tellsSharedSuffixesByContent();
    void readsSoundAndDamagedCompoundFiles_data();
    void readsSoundAndDamagedCompoundFiles();
};

void tst_FileTypeProbe::tellsByName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("base");
    QTest::addColumn<FileType>("type");
    const auto row = [](const char *path, const char *suffix, const char *base, FileType type) {
        QTest::newRow(path) << path << suffix << base << type;
    };
    row("/a.b/c.STEP", "STEP", "c", FileType::Step);
    row("a.prt", "prt", "a", FileType::NX);
    row("a.PRT.7", "PRT", "a", FileType::ProEngineer);
    row("a.b.asm.12", "asm", "a.b", FileType::ProEngineer);
    row("a.step.7", "7", "a.step", FileType::Unsupported);
    row("a.prt.7b", "7b", "a.prt", FileType::Unsupported);
    row("prt.7", "7", "prt", FileType::Unsupported);
    row("/x.step/noSuffix", "", "noSuffix", FileType::Unsupported);
}

void tst_FileTypeProbe::tellsByName()
{
    QFETCH(QString, path);
    QTEST(FileTypeProbe::suffix(path), "suffix");
    QTEST(FileTypeProbe::baseName(path), "base");
    QTEST(FileTypeProbe::byName(path), "type");
}

void tst_FileTypeProbe::tellsSharedSuffixesByContent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<FileType>("type");
    const auto row = [](const char *title, const char *name, const QByteArray &content,
                        FileType type) { QTest::newRow(title) << name << content << type; };
    const QByteArray creo = "#UGC:2 PART 1174\n";
    const QByteArray nx = compoundFile({"Root Entry", "images", "UG_PART"}, {1});
    const QByteArray solidEdge =
        compoundFile({"Root Entry", "Summary", "Versions", "Preview", "JSitesList", "x"}, {3, 1});
    const QByteArray office = compoundFile({"Root Entry", "WordDocument"}, {1});
    row("creo part", "a.prt", creo, FileType::ProEngineer);
    row("nx assembly in disguise", "a.asm", nx, FileType::NX);
    row("solid edge", "a.prt", solidEdge, FileType::SolidEdge);
    row("content before version", "a.prt.4", nx, FileType::NX);
    row("content of another suffix", "a.step", creo, FileType::Step);
    row("office document", "a.asm", office, FileType::SolidEdge);
    row("text with version", "a.prt.1", "Hello", FileType::ProEngineer);
    row("empty", "a.prt", "", FileType::NX);
    row("missing", "a.asm", {}, FileType::SolidEdge);
}

void tst_FileTypeProbe::tellsSharedSuffixesByContent()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QTemporaryDir directory;
    QFile file(directory.filePath(name));
    if (!content.isNull()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
        file.close();
    }
    QTEST(FileTypeProbe::byContent(file.fileName()), "type");
    // A folder of that name says nothing either.
    QVERIFY(!file.exists() || file.remove());
    QVERIFY(QDir().mkpath(file.fileName()));
    QCOMPARE(FileTypeProbe::byContent(file.fileName()), FileTypeProbe::byName(name));
}

void tst_FileTypeProbe::readsSoundAndDamagedCompoundFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("names"); // "..." when there may be more
    const QByteArray good = compoundFile({"Root Entry", "a", "b", "c", "d", "e"}, {5, 2});
    QTest::newRow("sound") << good << "abcde";
    const auto damaged = [&good](const char *title, int offset, quint32 value, const char *names) {
        QByteArray bytes = good;
        put<quint32>(bytes, offset, value);
        QTest::newRow(title) << bytes << names;
    };
    damaged("chain in a circle", 512 + 4 * 2, 5, "abcde...");
    damaged("chain leaves the file", 512 + 4 * 5, 0x00FFFFFF, "abc");
    damaged("directory out of the file", 48, 0x7FFFFFFF, "");
    damaged("table out of the file", 76, 0x12345678, "abc");
    damaged("sectors of 2 GB", 28, 0x001FFFFE, "");
    damaged("endless name", 512 * 6 + 128 + 64, 0x0001FFFF, "a...");
    QTest::newRow("cut within the header") << good.left(300) << "";
    QTest::newRow("cut within the directory") << good.left(512 * 6 + 60) << "";
}

void tst_FileTypeProbe::readsSoundAndDamagedCompoundFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, names);
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    const QStringList read = CompoundFile::entryNames(buffer);
    QVERIFY(read.size() < 10000);
    if (names.endsWith("..."))
        QVERIFY2(read.join("").startsWith(names.chopped(3)), qPrintable(read.join("").left(99)));
    else
        QCOMPARE(read.join(""), names);
}

QTEST_GUILESS_MAIN(tst_FileTypeProbe)
#include "tst_FileTypeProbe.moc"
