#include "app/shell/directoryof.h"

#include <QDir>

QString directoryOf(const QString &path)
{
    if (path.size() > 1) {
        for (int i = path.size() - 1; i >= 0; --i) {
            if (path[i] == '/' || path[i] == '\\')
                return path.left(i);
        }
    }
    return QDir::homePath();
}

QString startFolder(const QString &remembered)
{
    return !remembered.isEmpty() && QDir(remembered).exists() ? remembered : QDir::homePath();
}
