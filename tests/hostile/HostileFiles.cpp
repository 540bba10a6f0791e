#include "HostileFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

namespace {

using Random = QRandomGenerator;

const QString number = R"((?<![\w#.])[-+]?(?:\d+\.?\d*|\.\d+)(?:[eEdD][-+]?\d+)?)";

/// What happens to a random match of a pattern: it becomes one of these texts or, when there are
/// none, like another match.
struct TextDamage {
    const char *name;
    QString pattern;
    QStringList replacements;
};

const QVector<TextDamage> &textDamages()
{
    static const QVector<TextDamage> table = {
        {"other reference", "#\\d+", {}},
        {"bad reference", "#\\d+", {"#0", "#999999", "#-1", "$", "*", "()", "(#1,#1)"}},
        {"other kind", "\\b[A-Z][A-Za-z_]{2,}", {}},
        {"other number", number, {}},
        {"other number", number, {}},
        {"bad number",
         number,
         {"0", "-1", "1", "1e9", "1.E-9", "1e38", "1e300", "-1e400", "nan", "inf", "1,5", "0x10"}},
        {"bad count",
         "\\b\\d+\\b",
         {"0", "-1", "65536", "2147483647", "2147483648", "4294967295", "18446744073709551616",
          "99999999", QString(400, '9')}},
        {"other word", "(?<!\\S)\\S+", {}},
        {"lost word", "(?<!\\S)\\S+", {""}},
        {"bad sign", "[][(){},;/:]", {"", " ", "(", ")", "[", "}", "\"", "'", ",,", "/*"}},
        {"deep brackets",
         "[([{]",
         {QString("(").repeated(20000), QString("[").repeated(20000),
          QString("{ x {").repeated(20000)}},
        {"lost line", "(?m)^[^\n]*\n", {""}},
        {"other line", "(?m)^[^\n]*\n", {}},
        {"bad byte", ".", {QString(QChar(0)), QString(QChar(0xFF)), "\\", "\r", "\n", "#", "-"}},
    };
    return table;
}

/// The first match behind a random place, else the first of all.
QRegularExpressionMatch anyMatch(const QString &text, const QString &pattern, Random &random)
{
    const QRegularExpression expression(pattern);
    const auto match = expression.match(text, random.bounded(text.size() + 1));
    return match.hasMatch() ? match : expression.match(text);
}

/// Keeps the columns of an Iges file, which a longer or shorter text would move.
QString withColumns(const QString &line)
{
    const int numberWidth = 8;
    const QString tail = line.right(numberWidth);
    const int width = tail.startsWith('P') ? 64 : 72;
    const int back = tail.startsWith('P') ? 16 : 8;
    QString head = line.left(line.size() - back);
    while (head.size() > width && head.contains("  "))
        head.remove(head.lastIndexOf("  "), 1);
    return head.leftJustified(width, ' ', true) + line.right(back);
}

QString damageText(QByteArray &content, bool hasColumns, Random &random)
{
    const TextDamage &damage = textDamages()[random.bounded(textDamages().size())];
    QString text = QString::fromLatin1(content);
    const auto match = anyMatch(text, damage.pattern, random);
    if (!match.hasMatch())
        return {};
    const QString before = match.captured();
    const QString after = damage.replacements.isEmpty()
        ? anyMatch(text, damage.pattern, random).captured()
        : damage.replacements[random.bounded(damage.replacements.size())];
    const int at = match.capturedStart();
    text.replace(at, before.size(), hasColumns ? after.rightJustified(before.size()) : after);
    const int lineStart = text.lastIndexOf('\n', at) + 1;
    const int lineEnd = text.indexOf('\n', at);
    if (hasColumns && !before.endsWith('\n') && lineEnd - lineStart > 16)
        text.replace(lineStart, lineEnd - lineStart,
                     withColumns(text.mid(lineStart, lineEnd - lineStart)));
    content = text.toLatin1();
    return QString("%1 at %2: '%3' is '%4'")
        .arg(damage.name, QString::number(at), before.left(40).trimmed(), after.left(40).trimmed());
}

/// Writes 4 bytes that are no good number, count or length.
QString damageWord(QByteArray &content, Random &random)
{
    static const quint32 words[] = {0,          1,          0xFFFFFFFF, 0x7FC00000, 0x7F800000,
                                    0x7F7FFFFF, 0x00000001, 0x80000000, 0x71500000, 0x0FFFFFFF};
    const int stlCount = 80;
    if (content.size() < stlCount + 4)
        return {};
    const int at = random.bounded(4) == 0
        ? stlCount
        : stlCount + 2 * random.bounded((content.size() - stlCount - 2) / 2);
    const quint32 word = words[random.bounded(int(std::size(words)))];
    qToLittleEndian(word, content.data() + at);
    return QString("bad word at %1: %2").arg(QString::number(at), QString::number(word, 16));
}

QString damageBytes(QByteArray &content, Random &random)
{
    const int count = 1 + random.bounded(8);
    for (int i = 0; i < count && !content.isEmpty(); ++i)
        content[random.bounded(content.size())] = char(random.bounded(256));
    return QString("%1 random bytes").arg(count);
}

/// Lost, moved, repeated: what happens to files on their way.
QString damageBlock(QByteArray &content, Random &random)
{
    if (content.isEmpty())
        return {};
    const int at = random.bounded(content.size());
    const int size = 1 + random.bounded(random.bounded(4) == 0 ? 4000 : 200);
    const QByteArray block = content.mid(at, size);
    QString name = "lost";
    switch (random.bounded(4)) {
    case 0:
        name = "cut from";
        content.truncate(at);
        break;
    case 1:
        content.remove(at, size);
        break;
    case 2:
        name = "repeated";
        content.insert(at, block.repeated(1 + random.bounded(300)));
        break;
    default:
        name = "copied to the front half";
        content.insert(random.bounded(content.size() / 2 + 1), block);
    }
    return QString("%1 %2 bytes at %3")
        .arg(name, QString::number(block.size()), QString::number(at));
}

QString damage(QByteArray &content, bool hasColumns, Random &random)
{
    const bool isBinary = content.left(1000).contains('\0');
    switch (random.bounded(10)) {
    case 0:
        return damageBytes(content, random);
    case 1:
    case 2:
        return damageBlock(content, random);
    default:
        return isBinary ? damageWord(content, random) : damageText(content, hasColumns, random);
    }
}

HostileFile soundFile(const QString &format, const QStringList &paths)
{
    HostileFile result{format, QFileInfo(paths.first()).fileName(), {}, {}};
    for (const QString &path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(path));
        result.files.insert(QFileInfo(path).fileName(), file.readAll());
    }
    return result;
}

} // namespace

HostileFiles::HostileFiles(quint32 seed)
    : m_seed(seed)
{
    const QString samples = TN_SAMPLES_DIR "/";
    const QString robot = samples + "assembly/";
    const QString own = TN_SEEDS_DIR "/";
    m_sound = {
        soundFile("Step", {samples + "bracket.step"}),
        soundFile("Iges", {samples + "housing.iges"}),
        soundFile("STL", {samples + "gear.stl"}),
        soundFile("Obj", {samples + "chair.obj", samples + "chair.mtl"}),
        soundFile("VRML", {samples + "lamp.wrl"}),
        soundFile("Step", {samples + "gearbox.step"}),
        soundFile("Iges", {samples + "housing.iges"}),
        soundFile("STL", {samples + "gear-ascii.stl"}),
        soundFile("Obj", {own + "self.obj"}),
        soundFile("VRML", {own + "self.wrl"}),
        soundFile(
            "Step",
            {robot + "robot.step", robot + "arm.stp", robot + "base.stp", robot + "gripper.stp"}),
    };
}

HostileFile HostileFiles::file(int number) const
{
    HostileFile result = sound(number);
    Random random({m_seed, quint32(number)});
    QStringList damages;
    const int wanted = random.bounded(3) == 0 ? 2 + random.bounded(4) : 1;
    // What is damaged already may have nothing left to damage.
    for (int tries = 0; damages.size() < wanted && tries < 100; ++tries) {
        const QString name = result.files.keys().at(random.bounded(result.files.size()));
        QByteArray &content = result.files[name];
        const QByteArray before = content;
        const QString what = damage(content, result.format == "Iges", random);
        if (content != before)
            damages << name + ": " + what;
    }
    result.damage = damages.join("; ");
    return result;
}
