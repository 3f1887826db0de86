#pragma once

#include <QString>

/// A text as one word of a shell command, in quotes where it needs them.
QString shellWord(const QString &text);
