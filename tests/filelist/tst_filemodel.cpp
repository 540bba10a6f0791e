#include "filelist/tnCADImportFileModel.h"
#include "platform/tnInterfaceFactory.h"
#include "platform/tnPulseInterface.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QFont>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

#include <thread>

namespace {

/// The table as a flat one for all who ask: the model leaves the parent unlooked at, since its
/// views never ask for rows below a row, but the tester does.
class FlatModel : public tnCADImportFileModel {
public:
    using tnCADImportFileModel::onNextFrame;

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : tnCADImportFileModel::rowCount();
    }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : tnCADImportFileModel::columnCount();
    }
};

class CountingPulse : public tnPulseInterface {
public:
    int count = 0;
    void notifyActivity() override { ++count; }
};

} // namespace

/// Notes what a model announces, in order, in short words.
class Announcements : public QStringList {
public:
    explicit Announcements(tnCADImportFileModel &model)
    {
        using Model = tnCADImportFileModel;
        const auto rows = [this](const char *word) {
            return [this, word](const QModelIndex &parent, int first, int last) {
                *this << QString("%1 %2-%3%4")
                             .arg(word)
                             .arg(first)
                             .arg(last)
                             .arg(parent.isValid() ? " below a row" : "");
            };
        };
        note(QObject::connect(&model, &Model::changed, [this] { *this << "changed"; }));
        note(QObject::connect(&model, &Model::rowsInserted, rows("insert")));
        note(QObject::connect(&model, &Model::rowsRemoved, rows("remove")));
        note(QObject::connect(&model, &Model::modelReset, [this] { *this << "reset"; }));
        note(QObject::connect(
            &model, &Model::dataChanged,
            [this](const QModelIndex &from, const QModelIndex &to, const QVector<int> &roles) {
                *this << QString("data %1,%2%3%4")
                             .arg(from.row())
                             .arg(from.column())
                             .arg(from == to ? "" : " and more")
                             .arg(roles == QVector<int>{Qt::DecorationRole} ? " icon"
                                      : roles.isEmpty()                     ? ""
                                                                            : " odd roles");
            }));
    }
    ~Announcements()
    {
        for (const auto &connection : m_connections)
            QObject::disconnect(connection);
    }
    Q_DISABLE_COPY_MOVE(Announcements)

    /// What came since the last call.
    QStringList take()
    {
        QStringList taken;
        swap(taken);
        return taken;
    }

private:
    void note(const QMetaObject::Connection &connection) { m_connections.push_back(connection); }

    std::vector<QMetaObject::Connection> m_connections;
};

class tst_FileModel : public QObject {
    Q_OBJECT

private:
    using Model = tnCADImportFileModel;

    CountingPulse m_pulse;
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<FlatModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;

    QVariant at(int row, int column, int role = Qt::DisplayRole) const
    {
        return m_model->index(row, column).data(role);
    }

    static QImage picture(const QVariant &icon)
    {
        return icon.value<QIcon>().pixmap(16, 16).toImage();
    }

    /// Builds the table that a line tells: "A B(b2 b1) C" is an assembly B with two parts between
    /// two other files.
    void build(const QString &line)
    {
        QStringList assemblies{QString()};
        std::vector<std::pair<QString, QStringList>> groups{{QString(), {}}};
        QString last;
        const QRegularExpression token("\\w+|[()]");
        for (auto tokens = token.globalMatch(line); tokens.hasNext();) {
            const QString word = tokens.next().captured();
            if (word == "(") {
                assemblies << last;
                groups.push_back({last, {}});
            } else if (word == ")") {
                assemblies.removeLast();
            } else {
                std::find_if(
                    groups.begin(), groups.end(),
                    [&](const auto &group) {
                        return group.first == assemblies.last();
                    })->second
                    << path(word);
                last = word;
            }
        }
        for (const auto &group : groups) {
            if (group.first.isEmpty())
                m_model->addFiles(group.second);
            else
                QVERIFY(m_model->addChildFiles(group.second, path(group.first)));
        }
    }

    static QString path(const QString &name) { return "/in/" + name + ".step"; }

    /// The names of the table's rows, in source order or as a proxy shows them.
    static QString shown(const QAbstractItemModel &model)
    {
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names << model.index(row, 0).data().toString().trimmed().section('.', 0, 0);
        return names.join(' ');
    }

private Q_SLOTS:
    // The interface is fetched once for the process.
    void initTestCase() { tnInterfaceFactory::the().setPulse(&m_pulse); }

    void init()
    {
        m_services = std::make_unique<ScriptedServices>();
        m_model = std::make_unique<FlatModel>();
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    void cleanup()
    {
        m_tester.reset();
        m_model.reset();
        m_services.reset();
    }

    void cells()
    {
        build("A B(b1)");
        m_model->setFileState(path("A"), ImportState::Failed);
        QCOMPARE(m_model->columnCount(), 4);
        const QStringList titles{"File", "Type", "Size", "State"};
        const QStringList texts{"A.step", "Step", "Unknown", "Failed"};
        for (int column = 0; column < 4; ++column) {
            QCOMPARE(m_model->headerData(column, Qt::Horizontal), QVariant(titles[column]));
            QCOMPARE(m_model->headerData(column, Qt::Vertical), QVariant());
            QCOMPARE(m_model->headerData(column, Qt::Horizontal, Qt::ToolTipRole), QVariant());
            QCOMPARE(at(0, column), QVariant(texts[column]));
            QCOMPARE(at(0, column, Qt::ToolTipRole),
                     QVariant(tnCADImportFile(path("A")).toolTip()));
            QCOMPARE(at(0, column, Qt::TextAlignmentRole), QVariant(column == 2 ? 130 : 129));
            QCOMPARE(at(0, column, Qt::FontRole), QVariant());
            QFont italics;
            italics.setStyle(QFont::StyleItalic);
            QCOMPARE(at(2, column, Qt::FontRole), QVariant(italics));
            QCOMPARE(at(2, column, Qt::DecorationRole).isValid(), column == 3);
            for (const int role : {int(Qt::EditRole), int(Qt::StatusTipRole),
                                   int(Qt::WhatsThisRole), int(Qt::CheckStateRole), 257})
                QCOMPARE(at(0, column, role), QVariant());
        }
        QCOMPARE(m_model->headerData(4, Qt::Horizontal), QVariant());
        QCOMPARE(m_model->headerData(-1, Qt::Horizontal), QVariant());
        QCOMPARE(at(2, 0), QVariant("      b1.step"));
        QCOMPARE(m_model->flags(m_model->index(1, 0)) & Qt::ItemIsSelectable,
                 Qt::ItemFlags(Qt::ItemIsSelectable));
        QVERIFY(!(m_model->flags(m_model->index(2, 0)) & Qt::ItemIsSelectable));
        QVERIFY(m_model->flags(m_model->index(2, 0)) & Qt::ItemIsEnabled);

        emit m_services->files.fileTypeReceived(path("A"),
                                                static_cast<tnCADFileTypes::FileType>(33));
        QCOMPARE(at(0, 1), QVariant("undefined"));
        QCOMPARE(at(0, 1, Model::SortRole), QVariant("undefined"));
    }

    void rowsThatAreNoMore()
    {
        build("A");
        const QModelIndex cell = m_model->index(0, 3);
        QCOMPARE(m_model->Model::rowCount(cell), 1);
        QCOMPARE(m_model->Model::columnCount(cell), 4);
        m_model->clear();
        for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::ToolTipRole),
                               int(Qt::FontRole), int(Model::SortRole)}) {
            QCOMPARE(m_model->data(cell, role), QVariant());
            QCOMPARE(m_model->data({}, role), QVariant());
        }
        QCOMPARE(m_model->data({}, Qt::TextAlignmentRole), QVariant());
        for (const int row : {-1, 0, 1}) {
            QCOMPARE(m_model->stateOfRow(row), -1);
            QVERIFY(m_model->nodeOfRow(row).isNull());
            QCOMPARE(m_model->directoryOfRow(row), QString());
        }
    }

    void addingSkipsKnownPaths()
    {
        build("A(a1)");
        Announcements heard(*m_model);
        m_model->addFiles({path("B"), path("a1"), "B.step", path("B"), path("A"), path("b")});
        QCOMPARE(heard.take(), QStringList({"insert 2-2", "insert 3-3", "insert 4-4", "changed"}));
        QCOMPARE(m_model->fileNames(false),
                 QStringList({path("A"), path("a1"), path("B"), "B.step", path("b")}));
        QCOMPARE(m_model->fileNames(true),
                 QStringList({path("A"), path("B"), "B.step", path("b")}));

        m_model->addFiles({path("a1"), path("B")});
        m_model->addFiles({path("a1")});
        m_model->addFiles({});
        QCOMPARE(heard.take(), QStringList());
    }

    void addingWhileListenersRemove()
    {
        // Whoever hears of C clears the list, so A, which was there before, is new once more.
        build("A");
        const auto connection =
            connect(m_model.get(), &Model::rowsInserted, [this](const QModelIndex &, int row) {
                if (shown(*m_model).endsWith('C') && row == 2)
                    m_model->clear();
            });
        m_model->addFiles({path("B"), path("C"), path("A"), path("B"), path("A")});
        disconnect(connection);
        QCOMPARE(shown(*m_model), QString("A B"));
    }

    void partsStandBelowTheirAssembly()
    {
        build("A B C");
        Announcements heard(*m_model);
        QVERIFY(m_model->addChildFiles({path("b1")}, path("B")));
        QVERIFY(m_model->addChildFiles({path("b2")}, path("B")));
        QCOMPARE(shown(*m_model), QString("A B b2 b1 C"));
        QCOMPARE(heard.take(), QStringList({"insert 2-2", "changed", "insert 2-2", "changed"}));

        // A known path is no hindrance here, and the first row with it is the one that is found.
        QVERIFY(m_model->addChildFiles({path("c1"), path("A"), path("c1")}, path("C")));
        QCOMPARE(shown(*m_model), QString("A B b2 b1 C c1 A c1"));
        QCOMPARE(heard.take(), QStringList({"insert 5-7", "changed"}));
        m_model->setFileState(path("c1"), ImportState::Failed);
        QCOMPARE(heard.take(), QStringList({"data 5,3"}));

        QVERIFY(!m_model->addChildFiles({path("d1")}, path("D")));
        QCOMPARE(heard.take(), QStringList());
        QVERIFY(m_model->addChildFiles({}, path("C")));
        QCOMPARE(heard.take(), QStringList({"changed"}));
    }

    void partsSortLikeTheirAssembly_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("ascending");
        QTest::addColumn<QString>("descending");
        QTest::newRow("by name") << 0 << "Zed a0(z9(b8) a1) m(a2)"
                                 << "m(a2) a0(z9(b8) a1) Zed";
        QTest::newRow("by type") << 1 << "a0(z9(b8) a1) m(a2) Zed"
                                 << "Zed m(a2) a0(z9(b8) a1)";
        QTest::newRow("by size") << 2 << "m(a2) Zed a0(z9(b8) a1)"
                                 << "m(a2) Zed a0(z9(b8) a1)";
        QTest::newRow("by state") << 3 << "a0(z9(b8) a1) Zed m(a2)"
                                  << "m(a2) Zed a0(z9(b8) a1)";
    }

    void partsSortLikeTheirAssembly()
    {
        QFETCH(int, column);
        QFETCH(QString, ascending);
        QFETCH(QString, descending);
        build("m(a2) Zed a0(z9(b8) a1)");
        emit m_services->files.fileTypeReceived(path("Zed"), tnCADFileTypes::VRML);
        emit m_services->files.fileTypeReceived(path("a0"), tnCADFileTypes::Iges);
        m_model->setFileState(path("m"), ImportState::Incomplete);
        m_model->setFileState(path("Zed"), ImportState::Failed);
        m_model->setFileState(path("z9"), ImportState::Aborted);
        QSortFilterProxyModel proxy;
        proxy.setSourceModel(m_model.get());
        proxy.setSortRole(Model::SortRole);
        const auto flat = [](QString line) {
            return line.replace(QRegularExpression("[()]+"), " ").simplified();
        };
        proxy.sort(column, Qt::AscendingOrder);
        QCOMPARE(shown(proxy), flat(ascending));
        proxy.sort(column, Qt::DescendingOrder);
        QCOMPARE(shown(proxy), flat(descending));
        const QVariant key = at(0, column, Model::SortRole);
        QCOMPARE(key.userType(),
                 std::vector<int>(
                     {QMetaType::QString, QMetaType::QString, QMetaType::LongLong, QMetaType::Int})
                     .at(static_cast<std::size_t>(column)));
    }

    void sharedSuffixesAskForTheType()
    {
        m_model->addFiles({"/in/a.PRT", "/in/b.step"});
        QVERIFY(m_model->addChildFiles({"/in/c.Asm", "/in/d.igs"}, "/in/b.step"));
        QCOMPARE(m_services->files.typeRequests, QStringList({"/in/a.PRT", "/in/c.Asm"}));
        QCOMPARE(at(0, 1), QVariant("Undefined"));
        std::set<tnCADFileTypes::FileType> types;
        m_model->collectFileTypes(types);
        QCOMPARE(types, std::set({tnCADFileTypes::Step, tnCADFileTypes::Iges}));

        Announcements heard(*m_model);
        emit m_services->files.fileTypeReceived("/in/a.PRT", tnCADFileTypes::ProEngineer);
        QCOMPARE(heard.take(), QStringList({"changed", "data 0,1"}));
        QCOMPARE(at(0, 1), QVariant("ProEngineer"));
        emit m_services->files.fileTypeReceived("/in/gone.prt", tnCADFileTypes::NX);
        QCOMPARE(heard.take(), QStringList());

        // From whichever thread it comes, the answer arrives in the model's.
        std::thread([this] {
            emit m_services->files.fileTypeReceived("/in/c.Asm", tnCADFileTypes::SolidEdge);
        }).join();
        QCOMPARE(heard.take(), QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(heard.take(), QStringList({"changed", "data 2,1"}));
    }

    void listenersMayChangeTheTableAtATypeAnswer()
    {
        build("A B C");
        Announcements heard(*m_model);
        QMetaObject::Connection connection = connect(m_model.get(), &Model::changed, [&] {
            disconnect(connection);
            std::set<int> first{0};
            m_model->removeFiles(first);
        });
        emit m_services->files.fileTypeReceived(path("B"), tnCADFileTypes::NX);
        QCOMPARE(heard.take(), QStringList({"changed", "remove 0-0", "changed", "data 0,1"}));
        connection = connect(m_model.get(), &Model::changed, [this] { m_model->clear(); });
        emit m_services->files.fileTypeReceived(path("B"), tnCADFileTypes::NX);
        disconnect(connection);
        QCOMPARE(heard.take(), QStringList({"changed", "reset"}));
    }

    void removing_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("extended");
        QTest::addColumn<QString>("left");
        const auto row = [](const char *what, const char *table, const char *rows,
                            const char *extended, const char *left) {
            QTest::newRow(what) << table << rows << extended << left;
        };
        row("nothing", "A B", "", "", "A B");
        row("others move up", "A B C D E F G", "1 3 5", "1 3 5", "A C E G");
        row("an assembly", "A B(b2 b1) C", "1", "1 2 3", "A C");
        row("an assembly and its part", "A(a2 a1) B", "0 1", "0 1 2", "B");
        row("the last assembly", "A B(b1)", "1", "1 2", "A");
        row("a part", "A(a3 a2 a1) B", "2", "2", "A a3 a1 B");
        row("parts of parts", "A(a2(x1) a1) B(b1)", "0", "0 1 2 3", "B b1");
        row("a part with parts", "A(a2(x1) a1) B", "1", "1 2", "A a1 B");
        row("no such rows", "A B", "-1 2 7", "-1 2 7", "A B");
        row("some such rows", "A B", "-1 1 2", "-1 1 2", "A");
    }

    void removing()
    {
        QFETCH(QString, table);
        QFETCH(QString, rows);
        QFETCH(QString, extended);
        QFETCH(QString, left);
        const auto numbers = [](const QString &line) {
            std::set<int> result;
            for (const QString &word : line.split(' ', Qt::SkipEmptyParts))
                result.insert(word.toInt());
            return result;
        };
        build(table);
        const int before = m_model->rowCount();
        Announcements heard(*m_model);
        std::set<int> set = numbers(rows);
        m_model->removeFiles(set);
        QCOMPARE(set, numbers(extended));
        QCOMPARE(shown(*m_model), left);

        const auto removed = numbers(extended);
        QStringList expected;
        for (auto it = removed.rbegin(); it != removed.rend(); ++it) {
            if (*it >= 0 && *it < before)
                expected << QString("remove %1-%1").arg(*it);
        }
        if (!expected.isEmpty())
            expected << "changed";
        QCOMPARE(heard.take(), expected);
    }

    void clearingImportedFilesTakesPartsAlone()
    {
        build("A B(b3 b2 b1) C D");
        m_model->setFileState(path("B"), ImportState::Incomplete);
        for (const char *name : {"A", "b3", "b1", "C"})
            m_model->setFileState(path(name), ImportState::Succeeded);
        QCOMPARE(m_model->countFilesInState(ImportState::Succeeded, true), 2);
        QCOMPARE(m_model->countFilesInState(ImportState::Succeeded, false), 4);
        QCOMPARE(m_model->countFilesInState(ImportState::Aborted, false), 0);
        m_model->removeFilesInState(ImportState::Succeeded, true);
        QCOMPARE(shown(*m_model), QString("B b3 b2 b1 D"));
        m_model->removeFilesInState(ImportState::Succeeded, false);
        QCOMPARE(shown(*m_model), QString("B b2 D"));

        // B remembers three parts; D is none of them.
        std::set<int> first{0};
        m_model->removeFiles(first);
        QCOMPARE(shown(*m_model), QString("D"));
        Announcements heard(*m_model);
        m_model->removeFilesInState(ImportState::Failed, false);
        QCOMPARE(heard.take(), QStringList());
    }

    void clearingIsQuiet()
    {
        build("A B(b1)");
        QVERIFY(!m_model->isEmpty());
        Announcements heard(*m_model);
        m_model->clear();
        QCOMPARE(heard.take(), QStringList({"reset"}));
        QVERIFY(m_model->isEmpty());
        QCOMPARE(m_model->countFilesInState(ImportState::Pending, false), 0);
    }

    void typesOfTheList()
    {
        m_model->addFiles({"a.x_t", "b.skp", "c.prt", "d.unknown", "e.step"});
        QVERIFY(m_model->addChildFiles({"f.obj"}, "e.step"));
        std::set<tnCADFileTypes::FileType> types{tnCADFileTypes::KXT};
        m_model->collectFileTypes(types);
        QCOMPARE(types,
                 std::set({tnCADFileTypes::KXT, tnCADFileTypes::Obj, tnCADFileTypes::Step,
                           tnCADFileTypes::BCAD, tnCADFileTypes::Unsupported}));
    }

    void importableFilesInTheOrderGiven()
    {
        build("A B(b1) C D E F G");
        const char *names[] = {"A", "B", "C", "D", "E", "F", "G"};
        for (int state = 0; state < 7; ++state)
            m_model->setFileState(path(names[state]), static_cast<ImportState>(state));
        QCOMPARE(m_model->importableFiles({7, 6, 5, 4, 3, 2, 1, 0, 8, -1}),
                 QStringList({path("G"), path("D"), path("A")}));
        QCOMPARE(m_model->importableFiles({}), QStringList());
        QCOMPARE(m_model->stateOfRow(3), 2);
        QCOMPARE(m_model->directoryOfRow(3), QString("/in"));
    }

    void stateProgressAndNode()
    {
        build("A B");
        Announcements heard(*m_model);
        m_pulse.count = 0;
        m_model->setFileState(path("B"), ImportState::Importing);
        QCOMPARE(heard.take(), QStringList({"data 1,3"}));
        m_model->setFileProgress(path("B"), 40, "half");
        QCOMPARE(heard.take(), QStringList({"data 1,3"}));
        QCOMPARE(at(1, 3), QVariant("40% half"));
        QCOMPARE(m_pulse.count, 1);
        m_model->setFileNode(path("B"), tndNode(77));
        QCOMPARE(m_model->nodeOfRow(1), tndNode(77));

        m_model->setFileState(path("B"), static_cast<ImportState>(7));
        m_model->setFileState(path("B"), static_cast<ImportState>(-1));
        m_model->setFileState(path("b"), ImportState::Failed);
        m_model->setFileProgress(path("b"), 50, "more");
        m_model->setFileNode(path("b"), tndNode(78));
        QCOMPARE(heard.take(), QStringList());
        QCOMPARE(m_pulse.count, 1);
        QCOMPARE(m_model->stateOfRow(1), 1);
        QCOMPARE(m_model->stateOfRow(0), 0);
    }

    void promotingAssemblies_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("parts"); // one digit per part: its state, or x when removed
        QTest::addColumn<bool>("promoted");
        QTest::newRow("all succeeded") << 5 << "44" << true;
        QTest::newRow("one failed") << 5 << "43" << false;
        QTest::newRow("one pending") << 5 << "04" << false;
        QTest::newRow("the others gone") << 5 << "x4x" << true;
        QTest::newRow("all gone") << 5 << "xx" << true;
        QTest::newRow("one gone, one aborted") << 5 << "x6" << false;
        QTest::newRow("no parts") << 5 << "" << false;
        QTest::newRow("not incomplete") << 3 << "44" << false;
    }

    void promotingAssemblies()
    {
        QFETCH(int, state);
        QFETCH(QString, parts);
        QFETCH(bool, promoted);
        build("A B C");
        m_model->setFileState(path("B"), static_cast<ImportState>(state));
        std::set<int> gone;
        for (int i = 0; i < parts.size(); ++i) {
            const QString part = path(QString::number(i));
            QVERIFY(m_model->addChildFiles({part}, path("B")));
            if (parts[i] == 'x')
                gone.insert(1 + parts.size() - i);
            else
                m_model->setFileState(part, static_cast<ImportState>(parts[i].digitValue()));
        }
        m_model->removeFiles(gone);

        Announcements heard(*m_model);
        m_model->promoteCompletedParents();
        QCOMPARE(heard.take(), promoted ? QStringList("data 1,3") : QStringList());
        QCOMPARE(m_model->stateOfRow(1), promoted ? 4 : state);
    }

    void promotingWhileListenersRemove()
    {
        build("A(a1) B(b1) C(c1)");
        for (const char *name : {"A", "B", "C"})
            m_model->setFileState(path(name), ImportState::Incomplete);
        for (const char *name : {"a1", "b1", "c1"})
            m_model->setFileState(path(name), ImportState::Succeeded);
        const auto connection =
            connect(m_model.get(), &Model::dataChanged, [this] { m_model->clear(); });
        m_model->promoteCompletedParents();
        disconnect(connection);
        QVERIFY(m_model->isEmpty());
    }

    void iconsOfStates_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("file");
        QTest::newRow("Pending") << 0 << "ImportAdd";
        QTest::newRow("Importing") << 1 << "ImportRun";
        QTest::newRow("Loading") << 2 << "ImportRun";
        QTest::newRow("Failed") << 3 << "ImportFailed";
        QTest::newRow("Succeeded") << 4 << "ImportSucceeded";
        QTest::newRow("Incomplete") << 5 << "ImportIncomplete";
        QTest::newRow("Aborted") << 6 << "ImportFailed";
    }

    void iconsOfStates()
    {
        QFETCH(int, state);
        QFETCH(QString, file);
        build("A");
        m_model->setFileState(path("A"), static_cast<ImportState>(state));
        const QImage expected = picture(QIcon(":/ressources/" + file + ".svg"));
        QVERIFY(!expected.isNull());
        QCOMPARE(picture(at(0, 3, Qt::DecorationRole)), expected);
    }

    void animation()
    {
        build("A B C D");
        m_model->setFileState(path("B"), ImportState::Importing);
        m_model->setFileState(path("D"), ImportState::Loading);
        const QImage still = picture(at(1, 3, Qt::DecorationRole));
        Announcements heard(*m_model);
        const QStringList frame{"data 1,3 icon", "data 3,3 icon"};

        m_model->startAnimation();
        QTRY_VERIFY(heard.size() >= 6);
        QCOMPARE(heard.mid(0, 6), frame + frame + frame);
        const QImage moving = picture(at(1, 3, Qt::DecorationRole));
        QVERIFY(!moving.isNull());
        QVERIFY(moving != still);
        QCOMPARE(picture(at(3, 3, Qt::DecorationRole)), moving);

        m_model->stopAnimation();
        heard.clear();
        QTest::qWait(300);
        QCOMPARE(heard.take(), QStringList());

        // Rows at rest cost nothing, and a listener may empty the table between two rows.
        m_model->setFileState(path("B"), ImportState::Succeeded);
        heard.clear();
        m_model->onNextFrame();
        QCOMPARE(heard.take(), QStringList({"data 3,3 icon"}));
        m_model->setFileState(path("A"), ImportState::Importing);
        heard.clear();
        const auto connection =
            connect(m_model.get(), &Model::dataChanged, [this] { m_model->clear(); });
        m_model->onNextFrame();
        disconnect(connection);
        QCOMPARE(heard.take(), QStringList({"data 0,3 icon", "reset"}));
    }
};

QTEST_MAIN(tst_FileModel)

#include "tst_filemodel.moc"
