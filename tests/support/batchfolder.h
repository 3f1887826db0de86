#pragma once

#include <QObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace TestSupport {

/// How a program ended; code -1: it crashed, was killed or did not end.
struct Ended {
    int code = -1;
    QString out;
    QString errors;
};

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A test of the batch program, which runs in a temporary folder.
class BatchFolder : public QObject {
protected:
    QString path(const QString &name) const { return folder.filePath(name); }

    static void writeFile(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    /// Files of a folder by name.
    static QMap<QString, QByteArray> filesOf(const QString &folder)
    {
        QMap<QString, QByteArray> files;
        for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden))
            files[name] = contentOf(folder + "/" + name);
        return files;
    }

    /// Runs the program with arguments that hold no blanks.
    Ended run(const QString &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(ZRT_BATCH, arguments.split(' ', Qt::SkipEmptyParts));
        process.closeWriteChannel();
        return ended(process);
    }

    /// Runs the program and fails the test where it fails.
    void succeed(const QString &arguments) const
    {
        const Ended end = run(arguments);
        QVERIFY2(end.code == 0, qPrintable(arguments + "\n" + end.errors));
    }

    /// Runs lines of a shell, in which "zrt-batch" is the program; it ends at the first failure.
    Ended runShell(QString command) const
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        command.replace(QRegularExpression("(^|\n)zrt-batch "), "\\1" ZRT_BATCH " ");
        process.start("sh", {"-ec", command});
        return ended(process);
    }

    static Ended ended(QProcess &process)
    {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished(120000))
            return {};
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QTemporaryDir folder;
};

} // namespace TestSupport
