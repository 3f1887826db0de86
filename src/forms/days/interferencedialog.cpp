#include "forms/days/interferencedialog.h"

#include "fields/fieldstyles.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

InterferenceDialog::InterferenceDialog(const QString &path, QWidget *parent)
    : QDialog(parent), filePath(path), lines(new QPlainTextEdit(this)), problem(new QLabel(this))
{
    setObjectName("interferenceDialog");
    setWindowTitle("Interference");
    lines->setObjectName("interferenceLines");
    lines->setTabChangesFocus(true);
    lines->setPlaceholderText("50 Hz +- 0.2 x 8 # mains hum\n0.7145 s");
    problem->setObjectName("interferenceProblem");
    problem->setWordWrap(true);
    problem->setTextFormat(Qt::PlainText);
    problem->hide();
    auto *const what =
        new QLabel("Frequencies or periods at the telescope that no stack counts, a line each: a "
                   "number with Hz or s, where wanted +- and half the width, x and the number of "
                   "harmonics, # and a remark.",
                   this);
    what->setWordWrap(true);
    auto *const buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &InterferenceDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *const layout = new QVBoxLayout(this);
    for (QWidget *const part : std::initializer_list<QWidget *>{what, lines, problem, buttons})
        layout->addWidget(part);
    resize(460, 360);

    const Days::InterferenceList list = Days::readInterference(filePath);
    QStringList texts;
    for (const Days::Interference &entry : list.entries)
        texts << entry.text();
    lines->setPlainText(texts.join('\n'));
    if (list.problem.isEmpty())
        return;
    // What stands in the file is shown as it is, so that it can be mended. What cannot be shown
    // whole must not be written over.
    QFile file(filePath);
    constexpr qint64 most = 1 << 20; // bytes
    const bool isOpen = file.open(QIODevice::ReadOnly);
    if (isOpen)
        lines->setPlainText(QString::fromUtf8(file.read(most)));
    buttons->button(QDialogButtonBox::Ok)->setEnabled(isOpen && file.atEnd());
    tell(list.problem);
}

void InterferenceDialog::accept()
{
    const Days::InterferenceList list = Days::parseInterference(lines->toPlainText().toUtf8());
    QString failure = list.problem;
    if (failure.isEmpty())
        failure = Days::writeInterference(filePath, list.entries).text();
    if (failure.isEmpty()) {
        QDialog::accept();
        return;
    }
    tell(failure);
    lines->setFocus();
}

void InterferenceDialog::tell(const QString &text)
{
    problem->setText(text);
    FieldStyles::setStyle(problem, FieldStyles::failing);
    problem->show();
}
