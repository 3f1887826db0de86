#pragma once

#include "calc/ffasearch.h"

#include <QGroupBox>
#include <memory>

namespace Ui {
class FoldFields;
}

/// Asks which periods fast folding tries and with how many phase bins, for days that are all
/// searched alike. The fields are called like the parameters of an analysis; those of the periods
/// and of the running median may be empty.
class FoldFields : public QGroupBox {
    Q_OBJECT

public:
    explicit FoldFields(QWidget *parent = nullptr);
    ~FoldFields() override;

    /// What the empty fields stand for stands in them, grey.
    void showUsed(const FfaParameters &used);
    /// How large the search is, in words.
    void tellSize(const QString &text);

private:
    const std::unique_ptr<Ui::FoldFields> ui;
};
