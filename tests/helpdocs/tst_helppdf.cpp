#include "support/recordings.h"
#include "support/testmain.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

// The program that lays out the help, run on small documents. What readers of PDF files need is
// looked for in the bytes: offsets of the objects, bookmarks, links.

class TestHelpPdf : public QObject {
    Q_OBJECT

private slots:
    void bookmarksAndLinks();
    void pagesOfTables();
    void refusals_data();
    void refusals();

private:
    int layOut(const QByteArray &markdown);
    QByteArray content(const QString &name) const;
    QString latin(const QByteArray &bytes) const
    {
        return QString::fromLatin1(bytes.constData(), bytes.size());
    }

    QTemporaryDir folder;
    QString errors;
};

int TestHelpPdf::layOut(const QByteArray &markdown)
{
    const QString source = TestSupport::writeFile(folder, "help.md", markdown);
    QProcess process;
    // What libraries leak is not looked for, as in the build: it makes every allocation slow.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("ASAN_OPTIONS", "detect_leaks=0");
    process.setProcessEnvironment(environment);
    process.start(ZRT_HELPPDF, {source, folder.filePath("help.pdf")});
    process.waitForFinished();
    errors = QString::fromUtf8(process.readAllStandardError());
    return process.exitCode();
}

QByteArray TestHelpPdf::content(const QString &name) const
{
    QFile file(folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestHelpPdf::bookmarksAndLinks()
{
    QCOMPARE(layOut("# Title\n\nSee [there](#two-b).\n\n## One\n\nText.\n\n## Two\n\nText.\n\n"
                    "### Two b\n\nText.\n\n## Three\n\nText.\n\n## Four\n\nText.\n"),
             0);
    const QByteArray bytes = content("help.pdf");
    const QString pdf = latin(bytes);
    QCOMPARE(content("help.chapters"), QByteArray("1 title\n1 one\n1 two\n1 two-b\n1 three\n"
                                                  "1 four\n"));
    QCOMPARE(pdf.count("/Title <FEFF"), 6);
    QVERIFY2(pdf.contains("/Title <FEFF00540077006f00200062>"), "Two b");
    QCOMPARE(pdf.count("/Subtype /Link"), 6); // of the text and of the contents

    // Every object of both tables stands where its table says.
    int offset = pdf.mid(pdf.lastIndexOf("startxref")).section('\n', 1, 1).toInt();
    int objects = 0;
    const QRegularExpression entry("^(\\d{10}) 00000 n $");
    for (int table = 0; table < 2; ++table) {
        QVERIFY(pdf.mid(offset).startsWith("xref\n"));
        const QString part = pdf.mid(offset, pdf.indexOf("startxref", offset) - offset);
        int number = 0;
        for (const QString &line : part.split('\n')) {
            const QRegularExpressionMatch found = entry.match(line);
            if (found.hasMatch())
                QVERIFY(pdf.mid(found.captured(1).toInt(), 40)
                            .trimmed()
                            .startsWith(QString("%1 0 obj").arg(number++)));
            else if (line.split(' ').size() == 2)
                number = line.section(' ', 0, 0).toInt();
            else if (line.endsWith(" f "))
                ++number;
            objects += found.hasMatch();
        }
        offset = part.section("/Prev ", 1).section(' ', 0, 0).toInt();
    }
    QVERIFY(objects > 20);
}

void TestHelpPdf::pagesOfTables()
{
    QByteArray table = "| A | B |\n|---|---|\n";
    for (int row = 0; row < 50; ++row)
        table += "| " + QByteArray::number(row) + " | text |\n";
    QCOMPARE(layOut("# Title\n\n" + table + "\n## Behind\n\nText.\n"), 0);
    // 50 rows of 20 points each, 33 to a page of 711 points: no page is left empty.
    QCOMPARE(content("help.chapters"), QByteArray("1 title\n2 behind\n"));
}

void TestHelpPdf::refusals_data()
{
    QTest::addColumn<QByteArray>("markdown");
    QTest::addColumn<QString>("told");
    QTest::newRow("link to nowhere") << QByteArray("# A\n\n[x](#gone)\n") << "\"#gone\"";
    QTest::newRow("no picture") << QByteArray("# A\n\n![x](gone.png)\n") << "\"gone.png\"";
}

void TestHelpPdf::refusals()
{
    QFETCH(QByteArray, markdown);
    QFETCH(QString, told);
    QCOMPARE(layOut(markdown), 1);
    QVERIFY2(errors.contains(told), qPrintable(errors));
}

ZRT_UNIT_TEST_MAIN(TestHelpPdf)
#include "tst_helppdf.moc"
