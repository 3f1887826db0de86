#include "forms/switchedchannels.h"

#include "app/shell/channelswitches.h"
#include "calc/pulsar/channelsoff.h"

#include <QCheckBox>

void offerSwitchedChannels(QCheckBox *box, const QString &path, int channels)
{
    const std::vector<bool> off = ChannelSwitches::load(path, channels);
    box->setChecked(false);
    box->setEnabled(!off.empty());
    box->setToolTip(
        off.empty()
            ? QString("No channel of this recording is switched off; to switch one off, "
                      "click its bar of the bandpass in \"Show native\"")
            : "Sum without these channels, as in \"Show native\": " + textOfChannelsOff(off));
}

QString channelsToLeaveOut(const QCheckBox *box, const QString &path, int channels)
{
    const bool isWanted = box->isEnabled() && box->isChecked();
    return isWanted ? textOfChannelsOff(ChannelSwitches::load(path, channels)) : QString();
}
