#include <QImage>
#include <QTextStream>

// Compares two pictures pixel for pixel and says where they part. Ends with 0 when they are equal.

int main(int argc, char **argv)
{
    QTextStream out(stdout);
    if (argc != 3) {
        out << "Usage: zrt-golden-pixels OLD NEW\n";
        return 64;
    }
    const QString path = QString::fromLocal8Bit(argv[2]);
    const QImage before =
        QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_ARGB32);
    const QImage after = QImage(path).convertToFormat(QImage::Format_ARGB32);
    if (before.isNull() || after.isNull()) {
        out << "no picture: " << path << "\n";
        return 65;
    }
    if (before.size() != after.size()) {
        out << "differs: " << path << " is " << after.width() << "x" << after.height()
            << " and was " << before.width() << "x" << before.height() << "\n";
        return 1;
    }
    int count = 0;
    QRect around;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixel(x, y) == after.pixel(x, y))
                continue;
            ++count;
            around |= QRect(x, y, 1, 1);
        }
    }
    if (count > 0)
        out << "differs: " << path << " in " << count << " pixels between (" << around.left()
            << ", " << around.top() << ") and (" << around.right() << ", " << around.bottom()
            << ")\n";
    return count > 0;
}
