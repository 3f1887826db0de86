#include "data/truenumbers.h"

#include <QStringList>

namespace {

// `count` numbers that follow on each other. A damaged passport may announce any number of them.
QString runText(qint64 first, qint64 count)
{
    if (count < 1)
        return {};
    const QString last = QString::number(first + count - 1);
    if (count == 1)
        return last;
    return QString::number(first) + (count == 2 ? " " : " to ") + last;
}

} // namespace

QString moduleNumbersText(const ObservationData &data)
{
    const int listed = std::min(data.modules, int(data.moduleNumbers.size()));
    QStringList texts;
    bool isRun = true;
    for (int module = 0; module < listed; ++module) {
        const int number = moduleNumber(data, module);
        isRun = isRun && number == moduleNumber(data, 0) + module;
        texts << QString::number(number);
    }
    return isRun ? runText(moduleNumber(data, 0), data.modules) : texts.join(' ');
}

QString rayNumbersText(const ObservationData &data)
{
    return runText(rayNumber(data, 0), data.rays);
}
