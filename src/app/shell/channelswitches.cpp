#include "app/shell/channelswitches.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <algorithm>

namespace ChannelSwitches {

namespace {

constexpr char organisation[] = "zrt";
constexpr char application[] = "ZRT-Analytics-2_channels";

QString wholePath(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical;
}

// Slashes of a path would divide a key.
QString groupOf(const QString &path)
{
    return QCryptographicHash::hash(wholePath(path).toUtf8(), QCryptographicHash::Sha1).toHex();
}

} // namespace

std::vector<bool> load(const QString &path, int channels)
{
    const QString group = groupOf(path);
    const QSettings settings(QSettings::NativeFormat, QSettings::UserScope, organisation,
                             application);
    const QStringList numbers = settings.value(group + "/off").toString().split(' ');
    if (channels < 1 || settings.value(group + "/channels").toInt() != channels)
        return {};
    std::vector<bool> off(std::size_t(channels), false);
    for (const QString &text : numbers) {
        const int number = text.toInt();
        if (number >= 1 && number <= channels)
            off[std::size_t(number - 1)] = true;
    }
    return std::find(off.begin(), off.end(), true) == off.end() ? std::vector<bool>() : off;
}

void save(const QString &path, const std::vector<bool> &off)
{
    QStringList numbers;
    for (std::size_t i = 0; i < off.size(); ++i) {
        if (off[i])
            numbers << QString::number(i + 1);
    }
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, organisation, application);
    const QString group = groupOf(path);
    settings.remove(group);
    if (numbers.isEmpty())
        return;
    settings.setValue(group + "/path", wholePath(path));
    settings.setValue(group + "/channels", int(off.size()));
    settings.setValue(group + "/off", numbers.join(' '));
}

} // namespace ChannelSwitches
