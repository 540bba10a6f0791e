#include "ConverterFixture.h"
#include "sandbox/FileConfinement.h"
#include "sandbox/Sandbox.h"
#include "worker/ChildProcess.h"

#include <QtTest>

#include <cerrno>
#include <csignal>
#include <functional>

#include <fcntl.h>
#include <sched.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using Action = std::function<int()>; ///< as system calls answer: -1 and errno
Q_DECLARE_METATYPE(Action)

/// What a process can still do once it has given up its rights.
class tst_Sandbox : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        for (const char *name : {"in", "in/sub", "out"})
            QVERIFY(QDir(m_fixture.path("")).mkdir(name));
        for (const char *name : {"in/sub/b.stl", "secret", "other", "out/old.glb", "out/kept.glb"})
            m_fixture.write(name, "x");
        QVERIFY(QFile::link(m_fixture.path("secret"), m_fixture.path("in/top.stl")));
        QVERIFY(QFile::link(m_fixture.path("other"), m_fixture.path("in/link")));
    }

    void rights_data()
    {
        QTest::addColumn<Action>("action");
        QTest::addColumn<int>("error");
        const auto row = [](const char *name, int error, Action action) {
            QTest::newRow(name) << std::move(action) << error;
        };
        const auto open = [this](const char *name, int flags) -> Action {
            return [path = path(name), flags] { return ::open(path, flags, 0600); };
        };
        row("network", EPERM, [] { return socket(AF_INET, SOCK_STREAM, 0); });
        row("local socket", EPERM, [] { return socket(AF_UNIX, SOCK_STREAM, 0); });
        row("program", EPERM, [] { return execl("/bin/true", "true", nullptr); });
        row("namespace", EPERM, [] { return unshare(CLONE_NEWUSER); });
        row("process in a namespace", EPERM, [] {
            const long child = syscall(SYS_clone, CLONE_NEWUSER | SIGCHLD, 0, 0, 0, 0);
            if (child == 0)
                _exit(0);
            return int(child);
        });
        row("ring", EPERM, [] { return int(syscall(SYS_io_uring_setup, 1, nullptr)); });
#ifndef __SANITIZE_ADDRESS__
        row("trace", EPERM, [] { return int(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); });
#endif
        row("child", 0, [] {
            const pid_t child = fork();
            if (child == 0)
                _exit(0);
            return int(waitpid(child, nullptr, 0));
        });
        if (!tnconvert::FileConfinement::isAvailable())
            return;
        row("read the input, a link", 0, open("in/top.stl", O_RDONLY));
        row("read below its folder", 0, open("in/sub/b.stl", O_RDONLY));
        row("list its folder", 0, open("in", O_RDONLY | O_DIRECTORY));
        row("read a library", 0, open("/usr/lib/os-release", O_RDONLY));
        row("read the users", EACCES, open("/etc/passwd", O_RDONLY));
        row("read through a link", EACCES, open("in/link", O_RDONLY));
        row("read an older output", EACCES, open("out/old.glb", O_RDONLY));
        row("write beside the input", EACCES, open("in/sub/b.stl", O_WRONLY));
        row("make a file beside the input", EACCES, open("in/new", O_WRONLY | O_CREAT));
        row("make an output", 0, open("out/new", O_WRONLY | O_CREAT | O_EXCL));
        row("rename an output", 0,
            [from = path("out/old.glb")] { return rename(from, from + "2"); });
        row("move an output away", EACCES,
            [from = path("out/kept.glb"), to = path("in/c")] { return rename(from, to); });
    }

    void rights()
    {
        QFETCH(const Action, action);
        QTEST(errorOf(action, false), "error");
    }

    void rightsWithReferencesOutside()
    {
        if (!tnconvert::FileConfinement::isAvailable())
            QSKIP("This system has no Landlock.");
        const QByteArray other = path("other");
        QCOMPARE(errorOf([other] { return open(other, O_RDONLY); }, true), 0);
        QCOMPARE(errorOf([other] { return open(other, O_WRONLY); }, true), EACCES);
    }

    void ends_data()
    {
        QTest::addColumn<Action>("action");
        QTest::addColumn<int>("status");
        QTest::newRow("well") << Action([] { return 0; }) << 0;
        QTest::newRow("exit status") << Action([]() -> int { _exit(7); }) << (7 << 8);
        QTest::newRow("exception") << Action([]() -> int { throw std::bad_alloc(); }) << (1 << 8);
        QTest::newRow("signal") << Action([] { return raise(SIGKILL); }) << SIGKILL;
        QTest::newRow("crash") << Action([] { return raise(SIGSEGV); }) << SIGSEGV;
    }

    /// Whoever waits for a process learns how its copy ended.
    void ends()
    {
        QFETCH(const Action, action);
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGSEGV, SIG_DFL); // the sanitizer and the test have handlers of their own
            tnconvert::ChildProcess::run([&action] { action(); });
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QTEST(status & ~0x80, "status"); // whether there was a core dump is the system's affair
    }

private:
    QByteArray path(const char *name) const
    {
        return *name == '/' ? QByteArray(name) : QFile::encodeName(m_fixture.path(name));
    }

    /// The error number, 0 for none, of an action of a process that converts in/top.stl to out/.
    int errorOf(const Action &action, bool followsOutside) const
    {
        const pid_t child = fork();
        if (child == 0) {
            tnconvert::Sandbox::begin();
            tnconvert::Sandbox::confine(path("in/top.stl").toStdString(),
                                        path("out/new.glb").toStdString(), followsOutside);
            _exit(action() == -1 ? errno : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    ConverterFixture m_fixture;
};

QTEST_GUILESS_MAIN(tst_Sandbox)
#include "tst_Sandbox.moc"
