#include "filelist/tnCADImportSortModel.h"
#include "platform/tnInterfaceFactory.h"
#include "platform/tnPulseInterface.h"
#include "tests/support/ScriptedServices.h"

#include <QtGui/QFont>
#include <QtTest/QtTest>

#include <thread>

using Model = tnCADImportFileModel;

struct CountingPulse : tnPulseInterface {
    int count = 0;
    void notifyActivity() override { ++count; }
};

/// Flat for all who ask: the model itself leaves the parent unlooked at, since its views never ask
/// for rows below a row, but the tester does.
struct FlatModel : Model {
    using Model::onNextFrame;
    int rowCount(const QModelIndex &p = {}) const override
    {
        return p.isValid() ? 0 : Model::rowCount();
    }
    int columnCount(const QModelIndex &p = {}) const override { return p.isValid() ? 0 : 4; }
};

class tst_FileModel : public QObject {
    Q_OBJECT

private:
    CountingPulse m_pulse;
    ScriptedServices m_services;
    std::unique_ptr<FlatModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    QStringList m_heard;

    static QString path(const QString &name) { return "/in/" + name + ".step"; }
    static QStringList paths(QString names)
    {
        return names.isEmpty() ? QStringList() : path(names.replace(" ", ".step /in/")).split(' ');
    }
    /// Adds files, and parts to some of them.
    void fill(const QString &names, const std::vector<std::pair<QString, QString>> &parts = {})
    {
        m_model->addFiles(paths(names));
        for (const auto &[assembly, partNames] : parts)
            QVERIFY(m_model->addChildFiles(paths(partNames), path(assembly)));
        m_heard.clear();
    }
    /// One digit per file.
    void setStates(const QString &names, const QString &states)
    {
        for (int i = 0; i < paths(names).size(); ++i)
            m_model->setFileState(paths(names)[i], ImportState(states[i].digitValue()));
        m_heard.clear();
    }
    void remove(std::set<int> rows) { m_model->removeFiles(rows); }
    /// The names of the rows, in source order or as a proxy shows them.
    static QString shown(const QAbstractItemModel &model)
    {
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names << model.index(row, 0).data().toString().trimmed().section('.', 0, 0);
        return names.join(' ');
    }
    QVariant at(int row, int column, int role = 0) const
    {
        return m_model->index(row, column).data(role);
    }
    QImage iconAt(int row) const { return picture(at(row, 3, 1).value<QIcon>()); }
    static QImage picture(const QIcon &icon) { return icon.pixmap(16, 16).toImage(); }
    /// What the model has announced since the last call, in short words.
    QString heard() { return std::exchange(m_heard, {}).join(", "); }

private Q_SLOTS:
    // The interface is fetched once for the process.
    void initTestCase() { tnInterfaceFactory::the().setPulse(&m_pulse); }

    void init()
    {
        m_model = std::make_unique<FlatModel>();
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const auto hear = [this](QString word, int a, int b) { m_heard << word.arg(a).arg(b); };
        const Model *model = m_model.get();
        connect(model, &Model::changed, this, [=] { m_heard << "changed"; });
        connect(model, &Model::modelReset, this, [=] { m_heard << "reset"; });
        connect(model, &Model::rowsInserted, this,
                [=](auto, int a, int b) { hear("+%1-%2", a, b); });
        connect(model, &Model::rowsRemoved, this,
                [=](auto, int a, int b) { hear("-%1-%2", a, b); });
        connect(model, &Model::dataChanged, this, [=](auto from, auto to, auto roles) {
            QVERIFY(from == to && (roles.isEmpty() || roles == QVector<int>{Qt::DecorationRole}));
            hear(roles.isEmpty() ? "%1:%2" : "%1:%2 icon", from.row(), from.column());
        });
        m_heard.clear();
    }

    void cells()
    {
        fill("A B", {{"B", "b1"}});
        setStates("A", "3");
        const QStringList titles{"File", "Type", "Size", "State"};
        const QStringList texts{"A.step", "Step", "Unknown", "Failed"};
        for (int column = 0; column < 4; ++column) {
            QCOMPARE(m_model->headerData(column, Qt::Horizontal), QVariant(titles[column]));
            QCOMPARE(at(0, column), QVariant(texts[column]));
            QCOMPARE(at(0, column, Qt::ToolTipRole), tnCADImportFile(path("A")).toolTip());
            QCOMPARE(at(0, column, Qt::TextAlignmentRole), QVariant(column == 2 ? 130 : 129));
            QCOMPARE(at(0, column, Qt::FontRole), QVariant());
            QVERIFY(at(2, column, Qt::FontRole).value<QFont>().italic());
            QCOMPARE(at(0, column, Qt::DecorationRole).isValid(), column == 3);
            QCOMPARE(at(0, column, Qt::EditRole), QVariant());
        }
        QCOMPARE(m_model->headerData(4, Qt::Horizontal), QVariant());
        QCOMPARE(at(2, 0), QVariant("      b1.step"));
        QVERIFY(m_model->flags(m_model->index(1, 0)) & Qt::ItemIsSelectable);
        QCOMPARE(m_model->flags(m_model->index(2, 0)) & 0x3F, Qt::ItemFlags(Qt::ItemIsEnabled));

        // Views may keep indexes of rows that are no more.
        const QModelIndex cell = m_model->index(0, 3);
        m_model->clear();
        QVERIFY(m_model->isEmpty());
        QCOMPARE(heard(), QString("reset"));
        for (const int role : {0, 1, 3, 6, 256})
            QCOMPARE(m_model->data(cell, role), QVariant());
        QCOMPARE(m_model->data({}, Qt::TextAlignmentRole), QVariant());
        for (const int row : {-1, 0})
            QVERIFY(m_model->stateOfRow(row) == -1 && m_model->nodeOfRow(row).isNull()
                    && m_model->directoryOfRow(row).isNull());
    }

    void addingSkipsKnownPaths()
    {
        fill("A", {{"A", "a1"}});
        m_model->addFiles(paths("B a1 C B A b"));
        QCOMPARE(heard(), QString("+2-2, +3-3, +4-4, changed"));
        QCOMPARE(m_model->fileNames(false), paths("A a1 B C b"));
        QCOMPARE(m_model->fileNames(true), paths("A B C b"));
        m_model->addFiles(paths("a1 B"));
        m_model->addFiles(paths("a1"));
        m_model->addFiles({});
        QCOMPARE(heard(), QString());
        // A part that comes in the middle of the call is known as well, what goes is no longer.
        connect(m_model.get(), &Model::rowsInserted, this, [this](auto, int row) {
            if (row == 5)
                m_model->addChildFiles(paths("d1"), path("A"));
            if (row == 7 && at(4, 0) == "C.step")
                remove({4});
        });
        m_model->addFiles(paths("D d1 E C"));
        QCOMPARE(shown(*m_model), QString("A d1 a1 B b D E C"));
    }

    void partsStandBelowTheirAssembly()
    {
        fill("A B C");
        for (const char *part : {"b1", "b2"})
            QVERIFY(m_model->addChildFiles(paths(part), path("B")));
        QCOMPARE(heard(), QString("+2-2, changed, +2-2, changed"));
        // A known path is no hindrance here, and the first row with it is the one that is found.
        QVERIFY(m_model->addChildFiles(paths("c1 A c1"), path("C")));
        QCOMPARE(shown(*m_model), QString("A B b2 b1 C c1 A c1"));
        QCOMPARE(heard(), QString("+5-7, changed"));
        m_model->setFileState(path("c1"), ImportState::Failed);
        QCOMPARE(heard(), QString("5:3"));
        QVERIFY(!m_model->addChildFiles(paths("d1"), path("D")));
        QCOMPARE(heard(), QString());
        QVERIFY(m_model->addChildFiles({}, path("C")));
        QCOMPARE(heard(), QString("changed"));
    }

    void partsSortLikeTheirAssembly()
    {
        fill("m Zed a0", {{"m", "a2"}, {"a0", "z9 a1"}, {"z9", "b8"}});
        emit m_services.files.fileTypeReceived(path("Zed"), tnCADFileTypes::VRML);
        emit m_services.files.fileTypeReceived(path("a0"), tnCADFileTypes::Iges);
        setStates("m Zed z9", "536");
        tnCADImportSortModel proxy;
        const QAbstractItemModelTester tester(&proxy);
        proxy.setSourceModel(m_model.get());
        proxy.setSortRole(Model::SortRole);
        const QString m = "m a2", z = "Zed", a = "a0 z9 b8 a1";
        const QList<QStringList> ascending{{z, a, m}, {a, m, z}, {m, z, a}, {a, z, m}};
        const QList<QStringList> descending{{m, a, z}, {z, m, a}, {m, z, a}, {m, z, a}};
        const int keys[]{QMetaType::QString, QMetaType::QString, QMetaType::LongLong,
                         QMetaType::Int};
        for (int column = 0; column < 4; ++column) {
            proxy.sort(column, Qt::AscendingOrder);
            QCOMPARE(shown(proxy), ascending[column].join(' '));
            proxy.sort(column, Qt::DescendingOrder);
            QCOMPARE(shown(proxy), descending[column].join(' '));
            QCOMPARE(at(0, column, Model::SortRole).userType(), keys[column]);
        }
    }

    void sourceMayChangeAmongManyRows()
    {
        QStringList names;
        std::set<int> most;
        for (int i = 0; i < 300; ++i) {
            names << QString::number(i);
            if (i < 250)
                most.insert(i);
        }
        FlatModel other;
        tnCADImportSortModel proxy;
        proxy.setSourceModel(m_model.get());
        const QAbstractItemModelTester tester(&proxy);
        const QSignalSpy begun(&proxy, &QAbstractItemModel::modelAboutToBeReset);
        const QSignalSpy ended(&proxy, &QAbstractItemModel::modelReset);
        connect(m_model.get(), &Model::rowsInserted, this, [&](auto, int row) {
            if (row == 100)
                proxy.setSourceModel(&other);
            if (row == 200)
                proxy.setSourceModel(m_model.get());
            if (row == 299)
                m_model->removeFiles(most); // many rows as well
        });
        m_model->addFiles(names);
        QCOMPARE(begun.size(), ended.size());
        QCOMPARE(shown(proxy), QStringList(names.mid(250)).join(' '));
    }

    void sharedSuffixesAskForTheType()
    {
        m_model->addFiles({"a.PRT", "b.x_t", "c.skp", "d.unknown"});
        QVERIFY(m_model->addChildFiles({"e.Asm", "f.igs"}, "a.PRT"));
        QCOMPARE(m_services.files.typeRequests, QStringList({"a.PRT", "e.Asm"}));
        QCOMPARE(at(0, 1), QVariant("Undefined"));
        std::set<tnCADFileTypes::FileType> types;
        m_model->collectFileTypes(types);
        QCOMPARE(
            types,
            std::set({tnCADFileTypes::Iges, tnCADFileTypes::BCAD, tnCADFileTypes::Unsupported}));
        m_heard.clear();

        emit m_services.files.fileTypeReceived("a.PRT", tnCADFileTypes::ProEngineer);
        QCOMPARE(heard(), QString("changed, 0:1"));
        QCOMPARE(at(0, 1), QVariant("ProEngineer"));
        emit m_services.files.fileTypeReceived("gone.prt", tnCADFileTypes::NX);
        QCOMPARE(heard(), QString());

        // From whichever thread it comes, the answer arrives in the model's.
        std::thread([this] {
            emit m_services.files.fileTypeReceived("e.Asm",
                                                   static_cast<tnCADFileTypes::FileType>(33));
        }).join();
        QCOMPARE(heard(), QString());
        QCoreApplication::processEvents();
        QCOMPARE(heard(), QString("changed, 1:1"));
        QCOMPARE(at(1, 1), QVariant("undefined"));
        QCOMPARE(at(1, 1, Model::SortRole), QVariant("ProEngineer"));

        m_tester.reset();
        connect(m_model.get(), &Model::changed, this, [this] { m_model.reset(); });
        emit m_services.files.fileTypeReceived("a.PRT", tnCADFileTypes::NX);
        QVERIFY(!m_model); // the sanitizers see who still asks it
    }

    void removing()
    {
        struct {
            std::set<int> rows;
            QString announced, left;
        } const cases[]{
            {{}, "", "A B b2 x1 b1 C D d1"},
            {{-1, 8}, "", "A B b2 x1 b1 C D d1"},
            {{0, 4, 5}, "-5-5, -4-4, -0-0, changed", "B b2 x1 D d1"},
            {{1}, "-4-4, -3-3, -2-2, -1-1, changed", "A C D d1"},
            {{2}, "-3-3, -2-2, changed", "A B b1 C D d1"},
            {{6, 9}, "-7-7, -6-6, changed", "A B b2 x1 b1 C"},
        };
        for (const auto &[rows, announced, left] : cases) {
            m_model->clear();
            fill("A B C D", {{"B", "b2 b1"}, {"b2", "x1"}, {"D", "d1"}});
            remove(rows);
            QCOMPARE(heard(), announced);
            QCOMPARE(shown(*m_model), left);
        }
    }

    /// Listeners change the table in the middle of a removal whose rows are still to move up.
    void removingWithListenersInBetween()
    {
        std::set<int> everySecond;
        for (int row = 0; row < 40; ++row) {
            m_model->addFiles(paths(QString::number(row)));
            if (row % 2 == 0)
                everySecond.insert(row);
        }
        connect(m_model.get(), &Model::rowsRemoved, this, [&](auto, int row) {
            if (row == 30)
                m_model->addFiles(paths("A"));
            if (row == 20)
                remove({21, 16, 3}); // two odd ones, and one whose turn is still to come
            if (row == 9) {
                QCOMPARE(m_model->fileNames(false).mid(8, 2), paths("9 11"));
                QCOMPARE(at(22, 0), QVariant("39.step"));
                m_heard.clear();
                m_model->setFileState(path("39"), ImportState::Failed);
                QCOMPARE(heard(), QString("22:3"));
            }
        });
        remove(everySecond);
        QCOMPARE(shown(*m_model), QString("1 5 7 9 11 13 15 17 19 21 25 27 29 31 33 35 37 39 A"));
        QCOMPARE(m_model->stateOfRow(17), int(ImportState::Failed));
    }

    void clearingImportedFilesTakesPartsAlone()
    {
        fill("A B C D", {{"B", "b3 b2 b1"}});
        setStates("A B C b1 b3", "45444");
        QCOMPARE(m_model->countFilesInState(ImportState::Succeeded, true), 2);
        QCOMPARE(m_model->countFilesInState(ImportState::Succeeded, false), 4);
        m_model->removeFilesInState(ImportState::Succeeded, true);
        QCOMPARE(shown(*m_model), QString("B b3 b2 b1 D"));
        m_model->removeFilesInState(ImportState::Succeeded, false);
        QCOMPARE(shown(*m_model), QString("B b2 D"));
        // B remembers three parts; D is none of them.
        remove({0});
        QCOMPARE(shown(*m_model), QString("D"));
    }

    void stateProgressAndNode()
    {
        fill("A B C D E F G", {{"A", "a1"}});
        setStates("A B C D E F G", "0123456");
        QCOMPARE(m_model->importableFiles({7, 6, 5, 4, 3, 2, 1, 0, 8, -1}), paths("G D A"));
        QCOMPARE(m_model->stateOfRow(3), 2);
        QCOMPARE(m_model->directoryOfRow(3), QString("/in"));

        m_pulse.count = 0;
        m_model->setFileState(path("C"), ImportState::Importing);
        m_model->setFileProgress(path("C"), 40, "half");
        m_model->setFileNode(path("C"), tndNode(77));
        for (const int state : {-1, 7})
            m_model->setFileState(path("C"), static_cast<ImportState>(state));
        m_model->setFileState(path("c"), ImportState::Failed);
        m_model->setFileProgress(path("c"), 50, "more");
        m_model->setFileNode(path("c"), tndNode(78));
        QCOMPARE(heard(), QString("3:3, 3:3"));
        QCOMPARE(at(3, 3), QVariant("40% half"));
        QCOMPARE(m_pulse.count, 1);
        QCOMPARE(m_model->nodeOfRow(3), tndNode(77));
    }

    void promotingAssemblies()
    {
        // The states of the assembly and its two parts, 9 for a part that is removed; the result.
        for (const char *row : {"5444", "5435", "5045", "5494", "5994", "5965", "3443"}) {
            m_model->clear();
            fill("A B C", {{"B", "1 2"}});
            const QString states(row);
            setStates("B 1 2", states);
            for (const int part : {2, 1}) {
                if (states[part] == '9')
                    remove({part + 1});
            }
            m_model->setFileState(path("C"), ImportState::Incomplete);
            m_heard.clear();
            m_model->promoteCompletedParents();
            QCOMPARE(heard(), QString(states.endsWith('4') ? "1:3" : ""));
            QCOMPARE(m_model->stateOfRow(1), states[3].digitValue());
            QCOMPARE(m_model->stateOfRow(m_model->rowCount() - 1), 5);
        }
    }

    void listenersMayEmptyTheTable()
    {
        const auto clear = [this] {
            if (!m_model->isEmpty())
                m_model->clear();
        };
        fill("A B", {{"A", "a1"}, {"B", "b1"}});
        setStates("A a1 B b1", "5454");
        connect(m_model.get(), &Model::dataChanged, this, clear);
        m_model->promoteCompletedParents();
        QCOMPARE(heard(), QString("0:3, reset"));

        // A path that a listener has removed in the middle of a call is new once more.
        connect(m_model.get(), &Model::rowsInserted, this, [=](auto, int row) {
            if (row == 2)
                clear();
        });
        m_model->addFiles(paths("A B C A B"));
        QCOMPARE(heard(), QString("+0-0, +1-1, +2-2, reset, +0-0, +1-1, changed"));
        connect(m_model.get(), &Model::changed, this, clear);
        emit m_services.files.fileTypeReceived(path("A"), tnCADFileTypes::NX);
        QCOMPARE(heard(), QString("changed, reset"));
    }

    void iconsAndAnimation()
    {
        fill("A B C D E F G");
        setStates("A B C D E F G", "0123456");
        const char *names[]{"Add", "Run", "Run", "Failed", "Succeeded", "Incomplete", "Failed"};
        for (int row = 0; row < 7; ++row) {
            const QIcon icon(QString(":/ressources/Import%1.svg").arg(names[row]));
            QVERIFY(!picture(icon).isNull());
            QCOMPARE(iconAt(row), picture(icon));
        }

        const QImage still = iconAt(1);
        m_model->startAnimation();
        QTRY_VERIFY(m_heard.size() >= 4);
        m_model->stopAnimation();
        QVERIFY(heard().startsWith("1:3 icon, 2:3 icon, 1:3 icon, 2:3 icon"));
        QVERIFY(!iconAt(1).isNull() && iconAt(1) != still);
        QCOMPARE(iconAt(2), iconAt(1));
        setStates("B", "4");
        m_model->onNextFrame();
        QCOMPARE(heard(), QString("2:3 icon"));
    }
};

QTEST_MAIN(tst_FileModel)
#include "tst_filemodel.moc"
