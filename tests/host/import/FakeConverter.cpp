// Speaks the worker protocol and does what the lines of its input file say, one command each; see
// runCommand(). What it was asked, and when it was busy, goes to the file named by TN_FAKE_LOG.

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>
#include <QtCore/QtEndian>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

struct Run {
    QJsonObject request;
    double memory = 1000.0;
    bool hasFinished = false;

    QString input() const { return request.value("input").toString(); }
    QString output() const { return request.value("output").toString(); }
};

void writeLine(const QByteArray &line)
{
    std::fputs((line + '\n').constData(), stdout);
    std::fflush(stdout);
}

void send(const QString &event, QJsonObject object)
{
    object.insert("event", event);
    writeLine(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void log(const QByteArray &what)
{
    const int file = open(qgetenv("TN_FAKE_LOG"), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const QByteArray line = QByteArray::number(getpid()) + ' ' + what + '\n';
    if (file < 0 || write(file, line, size_t(line.size())) != line.size())
        std::abort();
    close(file);
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        std::abort();
}

/// A glTF binary with one empty node.
QByteArray emptyScene(const QString &source)
{
    QByteArray json = R"({"asset":{"version":"2.0","extras":{"source":")" + source.toUtf8()
        + R"("}},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"name":"n"}]})";
    while (json.size() % 4 != 0)
        json += ' ';
    QByteArray head(20, '\0');
    const quint32 words[] = {0x46546C67, 2, quint32(20 + json.size()), quint32(json.size()),
                             0x4E4F534A};
    for (int i = 0; i < 5; ++i)
        qToLittleEndian(words[i], head.data() + 4 * i);
    return head + json;
}

void finish(Run &run, const QString &state, const QString &message)
{
    run.hasFinished = true;
    log("end");
    send("finished",
         {{"id", run.request.value("id")},
          {"state", state},
          {"seconds", 0.5},
          {"message", message},
          {"memory", run.memory}});
}

void runCommand(Run &run, const QString &line)
{
    const QString command = line.section(' ', 0, 0);
    const QString rest = line.section(' ', 1);
    const QString first = rest.section(' ', 0, 0);
    const QJsonValue id = run.request.value("id");
    const QString sibling = QFileInfo(run.input()).absolutePath() + '/' + first;

    if (command == "sleep") {
        QThread::msleep(first.toULong());
    } else if (command == "progress") {
        send("progress", {{"id", id}, {"percent", first.toInt()}, {"message", "Reading"}});
    } else if (command == "warning") {
        send("warning", {{"id", id}, {"message", rest}});
    } else if (command == "part") {
        send("part", {{"id", id}, {"file", sibling}});
    } else if (command == "partdone") {
        send("partFinished",
             {{"id", id},
              {"file", sibling},
              {"state", rest.section(' ', 1, 1)},
              {"seconds", 0.125},
              {"message", rest.section(' ', 2)}});
    } else if (command == "half") {
        writeFile(run.output() + ".part", "half");
    } else if (command == "junk") {
        writeFile(run.output(), "this is no glTF");
    } else if (command == "write") {
        writeFile(run.output() + ".part", emptyScene(run.input()));
        std::rename(QFile::encodeName(run.output() + ".part"), QFile::encodeName(run.output()));
    } else if (command == "memory") {
        run.memory = first.toDouble();
    } else if (command == "say") {
        writeLine(rest.toUtf8());
    } else if (command == "flood") {
        for (int i = 0; i < 4096; ++i)
            std::fputs(QByteArray(1024, 'x').constData(), stdout);
        std::fflush(stdout);
        pause();
    } else if (command == "close") {
        close(STDOUT_FILENO);
        pause();
    } else if (command == "crash") {
        std::raise(SIGKILL);
    } else if (command == "exit") {
        std::_Exit(first.toInt());
    } else if (command == "hang") {
        pause();
    } else if (command == "finish") {
        finish(run, first, rest.section(' ', 1));
    } else {
        std::abort();
    }
}

void convert(const QJsonObject &request)
{
    Run run;
    run.request = request;
    log("begin " + QJsonDocument(request).toJson(QJsonDocument::Compact));
    send("started", {{"id", request.value("id")}});
    QFile file(run.input());
    if (!file.open(QIODevice::ReadOnly))
        std::abort();
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts))
        runCommand(run, line);
    if (run.hasFinished)
        return;
    runCommand(run, "write");
    finish(run, "success", QString());
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
    writeLine(greeting.isEmpty()
                  ? R"({"event":"ready","version":1,"formats":["Step","Iges","STL","VRML"]})"
                  : greeting);
    std::string line;
    while (std::getline(std::cin, line))
        convert(QJsonDocument::fromJson(QByteArray::fromStdString(line)).object());
    return 0;
}
