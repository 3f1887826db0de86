#include "calc/pulsar/channelsoff.h"

#include <QStringList>

std::optional<std::vector<bool>> channelsOff(const QString &text, int channels)
{
    std::vector<bool> off(std::size_t(std::max(channels, 0)), false);
    for (const QString &item : text.split(',')) {
        bool isNumber = false;
        const int number = item.trimmed().toInt(&isNumber);
        if (!isNumber || number < 1 || number > channels)
            return std::nullopt;
        off[std::size_t(number - 1)] = true;
    }
    return off;
}

QString textOfChannelsOff(const std::vector<bool> &off)
{
    QStringList numbers;
    for (std::size_t i = 0; i < off.size(); ++i) {
        if (off[i])
            numbers << QString::number(i + 1);
    }
    return numbers.join(',');
}
