#include "app/shell/recordingmodel.h"

#include "base/timetext.h"
#include "coords/barycentre.h"
#include "data/truenumbers.h"
#include "fields/textcolours.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QPalette>

namespace {

constexpr int mjdDecimals = 8; // 0.9 ms
constexpr int stepDigits = 12; // the last digits of ms divided by 1000 mean nothing
constexpr int lengthDecimals = 1;

bool isUsable(const RecordingEntry &entry)
{
    return entry.state == RecordingState::Whole || entry.state == RecordingState::Short;
}

QString stateText(RecordingState state)
{
    switch (state) {
    case RecordingState::Whole:
        return "whole";
    case RecordingState::Short:
        return "ends early";
    case RecordingState::Damaged:
        return "no recording";
    case RecordingState::Unreadable:
        break;
    }
    return "cannot be read";
}

QString frequencyText(const std::vector<double> &bands)
{
    return bands.empty() ? QString() : QString("%1 to %2").arg(bands.front()).arg(bands.back());
}

// What is shown of a usable recording.
QString headerText(const RecordingEntry &entry, int column)
{
    const ObservationData &header = entry.header;
    switch (column) {
    case RecordingModel::Begin:
        return textOfTime(entry.begin, "yyyy-MM-dd hh:mm:ss.zzz");
    case RecordingModel::Mjd:
        return entry.begin.isValid()
                   ? QString::number(Tools::modifiedJulianDay(entry.begin), 'f', mjdDecimals)
                   : QString();
    case RecordingModel::Length:
        return QString::number(header.npoints * header.tresolution, 'f', lengthDecimals);
    case RecordingModel::Points:
        return QString::number(header.npoints);
    case RecordingModel::Step:
        return QString::number(header.tresolution * 1000, 'g', stepDigits);
    case RecordingModel::Modules:
        return moduleNumbersText(header);
    case RecordingModel::Rays:
        return rayNumbersText(header);
    case RecordingModel::Bands:
        return QString::number(header.channels - 1);
    case RecordingModel::Frequencies:
        return frequencyText(header.fbands);
    default:
        return {};
    }
}

QString textOf(const RecordingEntry &entry, int column)
{
    switch (column) {
    case RecordingModel::File:
        return QFileInfo(entry.path).fileName();
    case RecordingModel::Size:
        return entry.size > 0 ? QLocale::c().formattedDataSize(entry.size) : QString();
    case RecordingModel::State:
        return stateText(entry.state);
    default:
        return isUsable(entry) ? headerText(entry, column) : QString();
    }
}

QVariant sortValue(const RecordingEntry &entry, int column)
{
    const ObservationData &header = entry.header;
    switch (column) {
    case RecordingModel::Begin:
    case RecordingModel::Mjd:
        return entry.begin;
    case RecordingModel::Length:
        return header.npoints * header.tresolution;
    case RecordingModel::Points:
        return header.npoints;
    case RecordingModel::Step:
        return header.tresolution;
    case RecordingModel::Bands:
        return header.channels;
    case RecordingModel::Frequencies:
        return header.fbands.empty() ? 0 : header.fbands.front();
    case RecordingModel::Size:
        return entry.size;
    default:
        return textOf(entry, column);
    }
}

bool isNumber(int column)
{
    return column != RecordingModel::File && column != RecordingModel::Begin &&
           column != RecordingModel::State;
}

} // namespace

void RecordingModel::setEntries(std::vector<RecordingEntry> newEntries)
{
    beginResetModel();
    entries = std::move(newEntries);
    endResetModel();
}

int RecordingModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(entries.size());
}

int RecordingModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant RecordingModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const RecordingEntry &entry = entries[std::size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return textOf(entry, index.column());
    case sortRole:
        return sortValue(entry, index.column());
    case Qt::ToolTipRole:
        return entry.problem.isEmpty() ? QDir::toNativeSeparators(entry.path) : entry.problem;
    case Qt::ForegroundRole:
        return entry.problem.isEmpty() ? QVariant()
                                       : TextColours::problem(QGuiApplication::palette());
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (isNumber(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    default:
        return {};
    }
}

QVariant RecordingModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QStringList names = {"File",   "Begin, UTC", "MJD",     "Length, s",
                                      "Points", "Step, ms",   "Modules", "Rays",
                                      "Bands",  "MHz",        "Size",    "State"};
    if (orientation == Qt::Vertical || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    return names.value(section);
}
