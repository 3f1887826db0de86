#include "support/formtest.h"

#include <QLineEdit>

namespace TestSupport {

void FormTest::init()
{
    folder = std::make_unique<QTemporaryDir>();
    window = std::make_unique<MainWindow>();
    window->resize(1280, 720);
    window->show();
}

void FormTest::cleanup()
{
    window.reset();
    folder.reset();
}

void FormTest::type(const char *field, const QString &text) const
{
    QLineEdit *const edit = find<QLineEdit>(field);
    edit->clear();
    QTest::keyClicks(edit, text);
}

bool FormTest::isMarked(const QString &field) const
{
    return find<QWidget>(field)->styleSheet() == "background-color: #f4cccc;";
}

} // namespace TestSupport
