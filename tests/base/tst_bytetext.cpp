#include "base/bytetext.h"
#include "base/process.h"
#include "support/testmain.h"

#include <fcntl.h>
#include <random>
#include <unistd.h>

class TestByteText : public QObject {
    Q_OBJECT

private slots:
    void texts();
    void everyByteComesBack();
    void filesOfAnyName();
};

void TestByteText::texts()
{
    const std::pair<QByteArray, QVector<ushort>> texts[] = {
        {"a\xD0\xB8\xE2\x82\xAC\xF0\x9F\x8C\x8C", {'a', 0x438, 0x20AC, 0xD83C, 0xDF0C}},
        {"\xEF\xBB\xBF\xFF", {0xFEFF, 0xDCFF}},                 // a byte order mark in front
        {"\xD0\xD1.pnt", {0xDCD0, 0xDCD1, '.', 'p', 'n', 't'}}, // KOI8-R
        {"\xE2\x82", {0xDCE2, 0xDC82}},                         // cut
        {"\xC0\xAF", {0xDCC0, 0xDCAF}},                         // a slash the long way
        {"\xED\xB2\x80", {0xDCED, 0xDCB2, 0xDC80}},             // a lone byte's unit
    };
    for (const auto &[bytes, units] : texts) {
        QCOMPARE(textOfBytes(bytes),
                 QString(reinterpret_cast<const QChar *>(units.data()), units.size()));
        QCOMPARE(bytesOfText(textOfBytes(bytes)), bytes);
    }
}

void TestByteText::everyByteComesBack()
{
    std::mt19937 random(1);
    // Leads and followers of UTF-8 oftener than chance has them.
    const QByteArray often = "\x7F\x80\xBF\xC2\xDF\xE0\xA0\xED\x9F\xEF\xBB\xF0\x90\xF4\x8F/";
    for (int i = 0; i < 20000; ++i) {
        QByteArray bytes;
        for (unsigned n = random() % 9; n > 0; --n)
            bytes +=
                random() % 2 ? often[int(random() % unsigned(often.size()))] : char(random() % 256);
        QCOMPARE(bytesOfText(textOfBytes(bytes)), bytes);
    }
}

void TestByteText::filesOfAnyName()
{
    QTemporaryDir folder;
    const QByteArray name = QFile::encodeName(folder.path()) + "/\xD0\xD1\xFF \xD0\xB8.pnt";
    const int handle = open(name.constData(), O_CREAT | O_WRONLY, 0600);
    QVERIFY(handle >= 0 && close(handle) == 0);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    const QString path = folder.filePath(QDir(folder.path()).entryList(QDir::Files).constFirst());
    QCOMPARE(QFile::encodeName(path), name);
    QVERIFY(QFileInfo(path).isFile());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(path.toLocal8Bit(), name); // as messages show it
}

int main(int argc, char **argv)
{
    qputenv("LC_ALL", "C"); // the locale of batch systems
    setUpProcess();
    return TestSupport::runTest<QCoreApplication, TestByteText>(argc, argv);
}
#include "tst_bytetext.moc"
