#pragma once

#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace TestSupport {

/// Runs the test object inside an application whose settings live in a temporary folder,
/// so that no test reads or changes those of the person who runs it.
template <typename Application, typename Test>
int runTest(int argc, char **argv)
{
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace TestSupport

/// main() of a test without widgets.
#define ZRT_UNIT_TEST_MAIN(Test)                                                                   \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        return TestSupport::runTest<QCoreApplication, Test>(argc, argv);                           \
    }

/// main() of a test that makes widgets; the file includes <QApplication>.
#define ZRT_GUI_TEST_MAIN(Test)                                                                    \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        return TestSupport::runTest<QApplication, Test>(argc, argv);                               \
    }
