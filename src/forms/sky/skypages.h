#pragma once

#include <QString>

class QWidget;
class SkyPage;

namespace Jobs {
class Worker;
}
namespace Sky {
struct SkyAnalysis;
}

/// The page of a map or of a search; the form owns it.
///
/// @param jobs  of the form: all that reads recordings, stopped by Esc
SkyPage *makeSkyPage(const Sky::SkyAnalysis &analysis, const QString &directory, Jobs::Worker &jobs,
                     QWidget *form);
