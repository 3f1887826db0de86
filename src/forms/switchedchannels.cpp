#include "forms/switchedchannels.h"

#include "app/shell/channelswitches.h"

#include <QCheckBox>
#include <QStringList>

namespace {

QString numbersOf(const std::vector<bool> &off)
{
    QStringList numbers;
    for (std::size_t i = 0; i < off.size(); ++i) {
        if (off[i])
            numbers << QString::number(i + 1);
    }
    return numbers.join(", ");
}

} // namespace

void offerSwitchedChannels(QCheckBox *box, const QString &path, int channels)
{
    const std::vector<bool> off = ChannelSwitches::load(path, channels);
    box->setChecked(false);
    box->setEnabled(!off.empty());
    box->setToolTip(off.empty()
                        ? QString("No channel of this recording is switched off; \"Show native\" "
                                  "does that by a click on its bandpass")
                        : "Sum without these channels, as in \"Show native\": " + numbersOf(off));
}

SwitchedRecording switchedRecording(const ObservationData &data, const QCheckBox *box,
                                    const QString &path)
{
    SwitchedRecording recording = {data, {}};
    const std::vector<bool> off =
        box->isChecked() ? ChannelSwitches::load(path, data.channels) : std::vector<bool>();
    if (off.empty())
        return recording;
    recording.data.samples = data.samples.withChannelsOff(off);
    recording.note = "channels left out: " + numbersOf(off);
    return recording;
}
