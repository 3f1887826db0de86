#include "forms/native/nativewaterfall.h"

#include "calc/waterfall.h"

#include <algorithm>
#include <cmath>

WaterfallView::Picture nativeWaterfall(const NativePicture &picture, const ObservationData &record,
                                       const NativeChoice &wanted, const NativeRange &range,
                                       int width)
{
    const NativeDomain &domain = picture.request.domain;
    const bool hasSamples = bool(picture.window.samples);
    // points of the recording in one point of the record
    const double step = hasSamples ? 1 : double(domain.count) / picture.reduction.columns;
    const int offset = hasSamples ? picture.offset : 0;
    const int most = hasSamples ? domain.count : picture.reduction.columns;
    const int begin = std::clamp(int(std::floor((range.first - domain.first) / step)), 0, most - 1);
    const int end = std::clamp(int(std::ceil((range.first + range.points - domain.first) / step)),
                               begin + 1, most);

    WaterfallView::Picture shown;
    shown.rows = record.channels - 1;
    const double leastAveraged = std::max(1.0, wanted.average / step);
    shown.columns = std::min(std::max(1, int((end - begin) / leastAveraged)), width);
    shown.first = domain.first + begin * step;
    shown.points = (end - begin) * step;
    shown.values =
        Tools::waterfall(record, {0, 0, offset + begin, end - begin, shown.columns,
                                  wanted.dispersion, wanted.isZeroDm, wanted.channelsOff});
    if (shown.values.empty()) {
        shown.columns = 0;
        return shown;
    }
    const int bands = std::min(shown.rows, int(wanted.channelsOff.size()));
    for (int band = 0; band < bands; ++band) {
        if (wanted.channelsOff[std::size_t(band)])
            std::fill_n(shown.values.begin() + qint64(band) * shown.columns, shown.columns, NAN);
    }
    if (wanted.isPerChannel)
        Tools::normaliseRows(shown.values, shown.rows, shown.columns);
    else
        Tools::normaliseRows(shown.values, 1, shown.rows * shown.columns);
    return shown;
}
