#include "forms/sky/skypages.h"

#include "forms/sky/mappage.h"
#include "forms/sky/searchpage.h"

SkyPage *makeSkyPage(const Sky::SkyAnalysis &analysis, const QString &directory, Jobs::Worker &jobs,
                     QWidget *form)
{
    if (analysis.flags.map)
        return new MapPage(analysis, directory, jobs, form);
    return new SearchPage(analysis, directory, jobs, form);
}
