#include "forms/native/passportmodel.h"

PassportModel::PassportModel(const Passport &passport, QObject *parent) : TableModel(parent)
{
    const QStringList known = {
        "npoints",   "tresolution",     "nbands",    "fbands", "channels",   "modulus",
        "modules",   "module",          "rays",      "ray",    "date_begin", "time_begin",
        "star_time", "native_datetime", "file_path", "point",  "dispersion", "stairs_names"};
    QMap<QString, QString> others = passport.entries;
    for (const QString &name : known) {
        if (others.contains(name))
            lines.emplace_back(name, others.take(name));
    }
    for (auto entry = others.cbegin(); entry != others.cend(); ++entry)
        lines.emplace_back(entry.key(), entry.value());
}

QString PassportModel::text(int row, int column) const
{
    const auto &[name, value] = lines[std::size_t(row)];
    return column == 0 ? name : value;
}

QVariant PassportModel::look(int row, int column, int role) const
{
    return role == Qt::ToolTipRole && column == 1 ? text(row, column).toHtmlEscaped() : QVariant();
}
