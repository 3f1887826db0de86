#include "base/wholefile.h"
#include "support/fulldisk.h"
#include "support/testmain.h"

#include <sys/stat.h>

using Kind = WriteFailure::Kind;

class TestWholeFile : public QObject {
    Q_OBJECT

private slots:
    void init() { folder = std::make_unique<QTemporaryDir>(); }
    void appearsWhole();
    void refusedPlaces();
    void fullDisk();
    void together();
    void abandoned();

private:
    QString path(const QString &name) const { return folder->filePath(name); }
    QStringList names() const { return QDir(folder->path()).entryList(QDir::Files | QDir::System); }
    QByteArray contents(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }

    std::unique_ptr<QTemporaryDir> folder;
};

void TestWholeFile::appearsWhole()
{
    QVERIFY(!writeWhole(path("a"), "old"));
    const QDateTime then(QDate(2015, 4, 1), QTime(12, 0, 1, 250), Qt::UTC);
    {
        WholeFile file;
        QVERIFY(!file.open(path("a")) && !file.write("ne") && !file.write("w"));
        QCOMPARE(contents("a"), QByteArray("old"));
        QVERIFY(!file.commit(then));
    }
    QCOMPARE(contents("a"), QByteArray("new"));
    QCOMPARE(QFileInfo(path("a")).lastModified(), then);
    {
        WholeFile given_up;
        QVERIFY(!given_up.open(path("a")) && !given_up.write("half"));
    }
    QCOMPARE(contents("a"), QByteArray("new"));
    QCOMPARE(names(), QStringList{"a"});
}

void TestWholeFile::refusedPlaces()
{
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    const QString tooLong(249, 'x');
    for (const auto &[place, reason] : {std::pair(path("missing/a"), "No such file or directory"),
                                        {path("."), "it is a folder"},
                                        {path("pipe"), "it is not an ordinary file"},
                                        {QString("/dev/null"), "it is not an ordinary file"},
                                        {path(tooLong), "249 bytes, 248 at most"}}) {
        const WriteFailure failure = writeWhole(place, "x");
        QCOMPARE(failure.kind, Kind::CannotCreate);
        QVERIFY2(failure.text().contains(place + " cannot be made: ") &&
                     failure.text().contains(reason),
                 qPrintable(failure.text()));
    }
    QCOMPARE(names(), QStringList{"pipe"});
    QVERIFY(!writeWhole(path(tooLong.chopped(1)), "x"));
}

void TestWholeFile::fullDisk()
{
    QVERIFY(!writeWhole(path("a"), "old"));
    for (const auto &[room, bytes] : {std::pair(0, 1), {99999, 100000}, {1000, 10000000}}) {
        WriteFailure failure;
        {
            const TestSupport::FullDisk disk{rlim_t(room)};
            failure = writeWhole(path("a"), QByteArray(bytes, 'x'));
        }
        QCOMPARE(failure.kind, Kind::CannotWrite);
        QCOMPARE(failure.text(), path("a") + " cannot be written: File too large.");
        QCOMPARE(contents("a"), QByteArray("old"));
        QCOMPARE(names(), QStringList{"a"});
    }
}

// The last file says that the others are there.
void TestWholeFile::together()
{
    QVERIFY(!writeTogether({{path("picture"), "old"}, {path("table"), "old"}}));
    const WriteFailure failure =
        writeTogether({{path("picture"), "new"}, {path("missing/table"), "new"}});
    QCOMPARE(failure.kind, Kind::CannotCreate);
    QCOMPARE(contents("picture"), QByteArray("old"));
    QVERIFY(!writeTogether({{path("picture"), "new"}, {path("table"), "new"}}));
    QCOMPARE(contents("picture") + contents("table"), QByteArray("newnew"));
    QCOMPARE(names(), (QStringList{"picture", "table"}));
}

void TestWholeFile::abandoned()
{
    const QStringList others = {"a.BACKUP", "a.Backup", "a.backup", "a.old123", "b.AbCdEf"};
    for (const QString &name : others + QStringList{"a.AbCdEf", "a.aBCDEF"})
        QVERIFY(!writeWhole(path(name), "x"));
    WholeFile living;
    QVERIFY(!living.open(path("a")));
    removeAbandoned({path("a"), path("c")});
    QVERIFY(!living.write("new") && !living.commit());
    QStringList left = names();
    left.sort();
    QCOMPARE(left, QStringList{"a"} + others);
    QCOMPARE(contents("a"), QByteArray("new"));
}

ZRT_UNIT_TEST_MAIN(TestWholeFile)
#include "tst_wholefile.moc"
