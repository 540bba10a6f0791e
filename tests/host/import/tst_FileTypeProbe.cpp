#include "host/import/CompoundFile.h"
#include "host/import/FileTypeProbe.h"

#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace tnhost;

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
    bytes.append(static_cast<int>(last + 1) * 512, '\0');
    for (int i = 0; i < 128; ++i)
        put<quint32>(bytes, 512 + 4 * i, freeSector);
    for (int i = 0; i < chain.size(); ++i)
        put<quint32>(bytes, 512 + 4 * static_cast<int>(chain[i]), chain.value(i + 1, endOfChain));
    for (int i = 0; i < names.size(); ++i) {
        const int at = 512 * (static_cast<int>(chain.value(i / 4)) + 1) + 128 * (i % 4);
        for (int c = 0; c < names[i].size(); ++c)
            put<quint16>(bytes, at + 2 * c, names[i][c].unicode());
        put<quint16>(bytes, at + 64, quint16(2 * names[i].size() + 2));
        bytes[at + 66] = static_cast<char>(i == 0 ? 5 : 1 + i % 2);
    }
    return bytes;
}

} // namespace

class tst_FileTypeProbe : public QObject {
    Q_OBJECT

private slots:
    void tellsByName()
    {
        const struct {
            QString path, suffix, base;
            FileType type;
        } rows[] = {
            {"/a.b/c.STEP", "STEP", "c", FileType::Step},
            {"a.PRT.7", "PRT", "a", FileType::ProEngineer},
            {"a.b.asm.12", "asm", "a.b", FileType::ProEngineer},
            {"a.step.7", "7", "a.step", FileType::Unsupported},
            {"a.prt.7b", "7b", "a.prt", FileType::Unsupported},
            {"prt.7", "7", "prt", FileType::Unsupported},
            {"/x.step/noSuffix", "", "noSuffix", FileType::Unsupported},
        };
        for (const auto &[path, suffix, base, type] : rows) {
            QCOMPARE(FileTypeProbe::suffix(path), suffix);
            QCOMPARE(FileTypeProbe::baseName(path), base);
            QCOMPARE(FileTypeProbe::byName(path), type);
        }
    }

    void tellsSharedSuffixesByContent()
    {
        const QByteArray creo = "#UGC:2 PART 1174\n";
        const QByteArray nx = compoundFile({"Root Entry", "images", "UG_PART"}, {1});
        const struct {
            QString name;
            QByteArray content; // null: the file is missing
            FileType type;
        } rows[] = {
            {"a.prt", creo, FileType::ProEngineer},
            {"a.asm", nx, FileType::NX},
            {"b.prt",
             compoundFile({"Root Entry", "Summary", "Versions", "Preview", "JSitesList", "x"},
                          {3, 1}),
             FileType::SolidEdge},
            {"a.prt.4", nx, FileType::NX}, // the content counts more than the version
            {"a.step", creo, FileType::Step},
            {"b.asm", compoundFile({"Root Entry", "WordDocument"}, {1}), FileType::SolidEdge},
            {"a.prt.1", "Hello", FileType::ProEngineer},
            {"c.prt", "", FileType::NX},
            {"c.asm", {}, FileType::SolidEdge},
        };
        const QTemporaryDir directory;
        for (const auto &[name, content, type] : rows) {
            QFile file(directory.filePath(name));
            if (!content.isNull()) {
                QVERIFY(file.open(QIODevice::WriteOnly));
                QCOMPARE(file.write(content), static_cast<qint64>(content.size()));
                file.close();
            }
            QCOMPARE(FileTypeProbe::byContent(file.fileName()), type);
        }
        // A pipe says nothing, and waiting for it would be in vain.
        QCOMPARE(::mkfifo(QFile::encodeName(directory.filePath("d.prt")), 0600), 0);
        QCOMPARE(FileTypeProbe::byContent(directory.filePath("d.prt")), FileType::NX);
    }

    void readsSoundAndDamagedCompoundFiles()
    {
        const QByteArray good = compoundFile({"Root Entry", "a", "b", "c", "d", "e"}, {5, 2});
        const auto damaged = [&good](int offset, quint32 value) {
            QByteArray bytes = good;
            put<quint32>(bytes, offset, value);
            return bytes;
        };
        const std::pair<QByteArray, QString> rows[] = {
            // with the names, and "..." when there may be more
            {good, "abcde"},
            {damaged(512 + 4 * 2, 5), "abcde..."}, // the chain is a circle
            {damaged(512 + 4 * 5, 0x00FFFFFF), "abc"}, // it leaves the file
            {damaged(48, 0x7FFFFFFF), ""}, // the directory is out of the file
            {damaged(76, 0x12345678), "abc"}, // the table is
            {damaged(28, 0x001FFFFE), ""}, // sectors of 2 GB
            {damaged(512 * 6 + 128 + 64, 0x0001FFFF), "a..."}, // an endless name
            {good.left(300), ""}, // cut within the header
            {good.left(512 * 6 + 60), ""}, // cut within the directory
        };
        for (auto [bytes, names] : rows) {
            QBuffer buffer(&bytes);
            QVERIFY(buffer.open(QIODevice::ReadOnly));
            const QStringList found = CompoundFile::entryNames(buffer);
            QVERIFY(found.size() < 10000);
            const QString read = found.join("");
            QCOMPARE(names.endsWith("...") ? read.left(names.size() - 3) + "..." : read, names);
        }
    }
};

QTEST_GUILESS_MAIN(tst_FileTypeProbe)
#include "tst_FileTypeProbe.moc"
