#pragma once

#include <QCommandLineParser>
#include <initializer_list>
#include <variant>
#include <vector>

/// How options with numbers are read, the same for all of them.
namespace Simulator {

/// An angle as it is typed, "hh:mm:ss" and "dd:mm:ss", in radians.
struct RightAscension {
    double *radians;
};
struct Declination {
    double *radians;
};

/// Where a value goes.
using Target = std::variant<int *, quint32 *, double *, RightAscension, Declination>;

/// An option with one value; its target is left alone when it was not given.
///
/// @return what is wrong with it, in plain words; empty when it was read
QString readOption(const QCommandLineParser &parser, const QString &name, Target target);

struct Field {
    const char *key;
    Target target;
};

/// "key=value,key=value"; keys that do not occur leave their fields alone.
///
/// @param option  its name, for the message
/// @return as readOption()
QString readFields(const QString &option, const QString &text, std::initializer_list<Field> fields);

/// The first of several answers that tells of something wrong; empty when none does.
QString firstProblem(const std::vector<QString> &answers);

/// An option that may be repeated, one source a time; they are added to those there are.
///
/// @param readSource  reads one, as readFields() does
template <typename Source, typename ReadSource>
QString readSources(const QStringList &texts, std::vector<Source> &sources,
                    const ReadSource &readSource)
{
    for (const QString &text : texts) {
        Source source;
        if (QString error = readSource(text, source); !error.isEmpty())
            return error;
        sources.push_back(source);
    }
    return {};
}

} // namespace Simulator
