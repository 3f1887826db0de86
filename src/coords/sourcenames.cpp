#include "coords/sourcenames.h"

#include <QRegularExpression>

namespace Tools {

QString pulsarNameFromCoords(const QString &alfa, const QString &delta)
{
    const bool negative = delta.startsWith('-');
    const QString size = negative ? delta.mid(1) : delta;
    const QString fields[] = {alfa.left(2), alfa.mid(3, 2), size.left(2), size.mid(3, 2)};
    static const QRegularExpression digits(QRegularExpression::anchoredPattern("\\d\\d"));
    for (const QString &field : fields) {
        if (!digits.match(field).hasMatch())
            return {};
    }
    return QString(negative ? "J%1%2-%3%4" : "J%1%2+%3%4")
        .arg(fields[0], fields[1], fields[2], fields[3]);
}

QString shortSourceName(const QString &name)
{
    static const QRegularExpression pattern("^J(\\d\\d\\d\\d)(.)(\\d+)");
    const QRegularExpressionMatch match = pattern.match(name);
    if (!match.hasMatch())
        return {};
    return QString("J%1%2%3").arg(match.captured(1), match.captured(2), match.captured(3).left(4));
}

} // namespace Tools
