#include "forms/ffa/candidatesmodel.h"

#include "results/candidates.h"

namespace {

const QStringList &titles()
{
    static const QStringList all = Results::shownTitles();
    return all;
}

QStringList fieldsOf(const FfaCandidate &candidate, int row)
{
    return Results::shownFields(Tools::tableCandidate(candidate), row + 1);
}

} // namespace

void CandidatesModel::setCandidates(const std::vector<FfaCandidate> &candidates)
{
    beginResetModel();
    fields.clear();
    for (const FfaCandidate &candidate : candidates)
        fields.push_back(fieldsOf(candidate, rows()));
    endResetModel();
}

void CandidatesModel::setCandidate(int row, const FfaCandidate &candidate)
{
    fields[std::size_t(row)] = fieldsOf(candidate, row);
    emit dataChanged(index(row, 0), index(row, columns() - 1));
}

QString CandidatesModel::allText() const
{
    QString text = titles().join('\t') + "\n";
    for (const QStringList &row : fields)
        text += row.join('\t') + "\n";
    return text;
}

int CandidatesModel::columns() const
{
    return titles().size();
}

// Units stand on a line of their own, so that the columns are as narrow as their numbers.
TableModel::Column CandidatesModel::column(int index) const
{
    const QString &title = titles()[index];
    return {QString(title).replace(", ", "\n"), {}, title != "remark"};
}

QString CandidatesModel::text(int row, int column) const
{
    return fields[std::size_t(row)][column];
}
