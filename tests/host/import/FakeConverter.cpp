// Speaks the worker protocol and does what the lines of its input file say, one command each; see
// runCommand(). What it was asked, and when it was busy, goes to the file named by TN_FAKE_LOG.

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>
#include <QtCore/QtEndian>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

QJsonObject request;
bool hasFinished = false;

void writeLine(const QByteArray &line)
{
    std::fputs((line + '\n').constData(), stdout);
    std::fflush(stdout);
}

void send(const QString &event, QJsonObject object)
{
    object.insert("event", event);
    object.insert("id", request.value("id"));
    writeLine(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void writeFile(const QString &path, const QByteArray &content, QFile::OpenMode mode = {})
{
    QFile file(path);
    if (!file.open(QFile::WriteOnly | QFile::Unbuffered | mode)
        || file.write(content) != content.size())
        std::abort();
}

void log(const QByteArray &what)
{
    const QByteArray line = QByteArray::number(getpid()) + ' ' + what + '\n';
    writeFile(QFile::decodeName(qgetenv("TN_FAKE_LOG")), line, QFile::Append);
}

/// A glTF binary with one empty node.
QByteArray emptyScene(const QString &source, const QString &sourceId)
{
    QByteArray json = R"({"asset":{"version":"2.0","extras":{"source":")" + source.toUtf8()
        + R"(","sourceId":")" + sourceId.toUtf8()
        + R"("}},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"name":"n"}]})";
    json.append((4 - json.size() % 4) % 4, ' ');
    const quint32 size = quint32(json.size());
    const quint32 words[] = {0x46546C67, 2, 20 + size, size, 0x4E4F534A};
    QByteArray head(20, '\0');
    qToLittleEndian<quint32>(words, 5, head.data());
    return head + json;
}

void runCommand(const QString &line)
{
    const QString command = line.section(' ', 0, 0);
    const QString rest = line.section(' ', 1);
    const QString first = rest.section(' ', 0, 0);
    const QString output = request.value("output").toString();
    const QString input = request.value("input").toString();
    const QString sibling = QFileInfo(input).absolutePath() + '/' + first;

    if (command == "sleep") {
        QThread::msleep(first.toULong());
    } else if (command == "progress") {
        send(command, {{"percent", first.toDouble()}, {"message", "Reading"}});
    } else if (command == "warning") {
        send(command, {{"message", rest}});
    } else if (command == "part") {
        send(command, {{"file", sibling}});
    } else if (command == "partdone") {
        send("partFinished",
             {{"file", sibling},
              {"state", rest.section(' ', 1, 1)},
              {"message", rest.section(' ', 2)},
              {"seconds", 0.125}});
    } else if (command == "reference") {
        send(command, {{"file", sibling}});
    } else if (command == "append") {
        writeFile(sibling, "more\n", QFile::Append);
    } else if (command == "half") {
        writeFile(output + ".part", "half");
    } else if (command == "junk") {
        writeFile(output, "this is no glTF");
    } else if (command == "write") {
        writeFile(output, emptyScene(input, request.value("sourceId").toString()));
    } else if (command == "take") {
        // In a process of its own, as the real one converts.
        if (fork() == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const QByteArray taken(first.toInt(), 'x');
            // And in copies of it, which share what they do not change.
            for (int copies = rest.section(' ', 1, 1).toInt(); copies > 0 && fork() > 0; --copies) {
            }
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            pause();
        }
    } else if (command == "say") {
        writeLine(rest.toUtf8());
    } else if (command == "flood") {
        std::fputs(QByteArray(80 << 20, 'x').constData(), stdout);
    } else if (command == "close") {
        close(STDOUT_FILENO);
        pause();
    } else if (command == "raise") {
        std::signal(first.toInt(), SIG_DFL);
        std::raise(first.toInt());
    } else if (command == "exit") {
        std::_Exit(first.toInt());
    } else if (command == "hang") {
        pause();
    } else if (command == "finish") {
        hasFinished = true;
        log("end");
        send("finished", {{"state", first}, {"seconds", 0.5}, {"message", rest.section(' ', 1)}});
    } else {
        std::abort();
    }
}

void convert()
{
    hasFinished = false;
    log("begin " + QJsonDocument(request).toJson(QJsonDocument::Compact));
    send("started", {});
    QFile file(request.value("input").toString());
    file.open(QIODevice::ReadOnly);
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts))
        runCommand(line);
    if (hasFinished)
        return;
    runCommand("write");
    runCommand("finish success");
}

} // namespace

int main()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const QByteArray greeting = qgetenv("TN_FAKE_GREETING");
    if (greeting == "exit")
        return 3;
    if (greeting == "silence")
        pause();
    const QByteArray usual =
        R"({"event":"ready","version":2,"formats":["Step","Iges","STL","VRML"],"program":[")"
        + qgetenv("TN_FAKE_PROGRAM") + "\"]}";
    writeLine(greeting.isEmpty() ? usual : greeting);
    for (std::string line; std::getline(std::cin, line);) {
        request = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        convert();
    }
    return 0;
}
