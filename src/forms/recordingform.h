#pragma once

#include "data/observationdata.h"
#include "forms/fieldvalues.h"
#include "forms/fileform.h"

#include <functional>
#include <vector>

/// The base of the forms with an analysis of one recording: it reads the recording, moves what
/// stands in the fields into the parameters of the analysis and back, tells problems beside the
/// fields at fault, runs on Enter and copies the command of the batch program.
///
/// A form brings its .ui and its analysis. The widgets are known by their object names: a field
/// by the name or the key of its parameter in the registry, `dataEnd` tells of a file that ends
/// early, `pushButton` runs, `commandButton` copies and `leaveOutChannels` leaves out the channels
/// that are switched off.
class RecordingForm : public FileForm {
    Q_OBJECT

protected:
    using FileForm::FileForm;

    /// Reads the recording, which must have so many points.
    ///
    /// @return false when there is no recording
    bool open(int leastPoints = 1);

    /// Shows the form and begins to listen to its buttons. The panel may have fields too.
    void install(QWidget *plot, QWidget *panel);

    /// What "Run" does.
    virtual void run() = 0;
    /// The call of the batch program for what stands in the fields; empty, after telling why,
    /// where there is none.
    virtual QString command() = 0;

    /// The field of that object name in the form or its panel; null where there is none.
    QWidget *field(const QString &name) const;

    /// Begins a reading of the fields: no problem is known, no field marked.
    void beginReading();
    /// Reads a field, where the form has it; a text that cannot be read counts as 0 and goes to
    /// `unread`.
    void readField(const FieldText &told, FieldRef value);
    /// The same of several.
    template <typename Parameters>
    void readFields(const std::vector<const Field<Parameters> *> &fields, Parameters &parameters)
    {
        for (const Field<Parameters> *told : fields) {
            if (told->of)
                readField(*told, told->of(parameters));
        }
    }
    /// Fills a field, where the form has it.
    void showField(const FieldText &told, const FieldValue &value);

    /// Refuses texts in fields with arrows that are no numbers of their ranges, beside the fields.
    ///
    /// @return whether there were any
    bool refuseUnread();

    /// Marks a field as failing until the next reading; null is nothing.
    void mark(QWidget *failing);
    /// Brings the field of a problem into sight and gives it the focus.
    void focusOn(const FieldProblem &problem);
    /// Tells all problems in one box that hides no field at fault. These are marked; the first gets
    /// the focus.
    void refuse(const std::vector<FieldProblem> &problems, const QString &remark = {});

    /// Numbers of the channels that sums leave out, "4,21", where the user wants that; else empty.
    QString channelsOff() const;

    /// Runs work on the window's thread, which stays alive; Esc stops it. A failure is told in a
    /// box.
    ///
    /// @return false after a failure
    bool runHere(const std::function<void(const Jobs::Control &)> &work);

    ObservationData data;
    QString readProblem; ///< of a file that ends early; else empty
    std::vector<FieldValues::Unread> unread;

    void keyPressEvent(QKeyEvent *event) override;

private:
    void copyCommand();
    std::optional<Refusal> read(int leastPoints);
    QWidget *fieldOf(const FieldText &told) const;

    std::vector<QWidget *> marked;
    QWidget *fieldPanel = nullptr;
};
