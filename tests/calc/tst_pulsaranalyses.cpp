#include "calc/problems.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/runanalysis.h"
#include "calc/samples.h"

#include <QFile>
#include <QMap>
#include <QXmlStreamReader>

// The list of the analyses against the definitions of the forms, which hold the same names,
// labels, presets and ranges, against the batch program's commands and against the manual.

namespace {

// A widget of a form's definition: its class, and its properties as texts.
struct Widget {
    QString kind;
    QMap<QString, QString> properties;
};

QString fileText(const QString &path)
{
    QFile file(QString(ZRT_SOURCE "/") + path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QMap<QString, Widget> widgetsOf(const QString &form)
{
    QMap<QString, Widget> widgets;
    QXmlStreamReader xml(fileText(form));
    QString current;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("widget")) {
            current = xml.attributes().value("name").toString();
            widgets[current].kind = xml.attributes().value("class").toString();
        } else if (xml.isStartElement() && xml.name() == QLatin1String("property")) {
            const QString property = xml.attributes().value("name").toString();
            xml.readNextStartElement();
            widgets[current].properties[property] =
                xml.readElementText(QXmlStreamReader::IncludeChildElements);
        }
    }
    return widgets;
}

// What a field starts with, as its widget's definition has it; empty where the form fills it in.
QString presetText(const PulsarField &field, const PulsarParameters &presets)
{
    const FieldValue value = field.valueIn(presets);
    if (const int *const whole = std::get_if<int>(&value))
        return QString::number(*whole);
    if (const double *const number = std::get_if<double>(&value))
        return QString::number(*number);
    if (const bool *const is = std::get_if<bool>(&value))
        return *is ? "true" : "false";
    return {};
}

QString startOf(const Widget &widget)
{
    const QString text = widget.properties["text"];
    return widget.properties.value("checked", widget.properties.value("value", text));
}

void checkRange(const Widget &widget, const PulsarField &field)
{
    if (widget.kind != "WholeBox")
        return;
    QCOMPARE(widget.properties["minimum"].toDouble(), field.least);
    QCOMPARE(widget.properties["maximum"].toDouble(), field.most);
}

} // namespace

class TestPulsarAnalyses : public QObject {
    Q_OBJECT

private slots:
    void pulsarFormHasTheFields();
    void searchFormHasTheFields();
    void formHasTheButtons();
    void commandsTakeWhatTheirAnalysesRead();
    void tellsAllProblemsAtOnce();
    void everyActionIsKnownToTheProgram();
};

void TestPulsarAnalyses::pulsarFormHasTheFields()
{
    QMap<QString, Widget> widgets = widgetsOf("src/plot/pulsargrafikinfo.ui");
    widgets.insert(widgetsOf("src/forms/pulsar/pulsarform.ui"));
    PulsarParameters presets = pulsarAnalyses().front().presets;
    presets.points = Pulsar::fixedPoints; // which 0 stands for
    const QStringList filledIn = {"--utc", "--compare", "--delta", "--channels-off"};
    for (const PulsarField &field : pulsarFields()) {
        const auto reads = [&field](const PulsarAnalysis &analysis) {
            return !analysis.label.isEmpty() && analysis.reads(field);
        };
        if (std::ranges::none_of(pulsarAnalyses(), reads) || !field.of || !field.choices.empty())
            continue;
        QVERIFY2(widgets.contains(field.name), qPrintable(field.name));
        checkRange(widgets[field.name], field);
        const QString preset = presetText(field, presets);
        if (filledIn.contains(field.option))
            QCOMPARE(preset, QString(field.option == "--delta" ? "0" : ""));
        else
            QCOMPARE(startOf(widgets[field.name]), preset);
    }
}

void TestPulsarAnalyses::searchFormHasTheFields()
{
    const QMap<QString, Widget> widgets = widgetsOf("src/forms/ffa/ffaform.ui");
    const PulsarAnalysis &search = *findAnalysis("createFFA");
    const QStringList ofTheRecording = {"--module",      "--ray",        "--count",
                                        "--period-min",  "--period-max", "--rmed-width",
                                        "--channels-off"};
    int compared = 0;
    for (const PulsarField *field : search.fields) {
        // The form computes with these as they are, or chooses from a list.
        if (!widgets.contains(field->name) || ofTheRecording.contains(field->option))
            continue;
        QCOMPARE(startOf(widgets[field->name]), presetText(*field, search.presets));
        checkRange(widgets[field->name], *field);
        ++compared;
    }
    QCOMPARE(compared, 10);
}

void TestPulsarAnalyses::formHasTheButtons()
{
    const QMap<QString, Widget> widgets = widgetsOf("src/forms/pulsar/pulsarform.ui");
    int buttons = 2; // for the kind of first point
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        if (analysis.label.isEmpty())
            continue;
        const bool isSwitch = analysis.name == "sumPeriodOfBands"; // of "Sum period"
        buttons += isSwitch ? 0 : 1;
        QCOMPARE(widgets[analysis.name].kind, QString(isSwitch ? "QCheckBox" : "QRadioButton"));
        QCOMPARE(widgets[analysis.name].properties["text"], analysis.label);
    }
    for (const FieldChoice &choice : pulsarField("--noise").choices) {
        ++buttons;
        QCOMPARE(widgets[choice.button].properties["text"], choice.label);
        QCOMPARE(widgets[choice.button].properties["checked"] == "true",
                 choice.value == PulsarParameters().noise);
    }
    QCOMPARE(std::count_if(widgets.begin(), widgets.end(),
                           [](const Widget &widget) { return widget.kind == "QRadioButton"; }),
             buttons);
}

// The manual tells of every command as well.
void TestPulsarAnalyses::commandsTakeWhatTheirAnalysesRead()
{
    const QString manual = fileText("README.md");
    for (const PulsarCommand &command : pulsarCommands()) {
        QStringList offered = {"--module", "--ray"}; // which every command takes
        for (const CommandOption &option : command.options)
            offered << option.option;
        QStringList read;
        for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
            if (analysis.command == command.name)
                for (const PulsarField *field : analysis.fields)
                    read << field->option;
        }
        read.removeDuplicates();
        read.sort();
        offered.sort();
        QCOMPARE(offered, read);
        QVERIFY(manual.contains("`" + command.name + "`") ||
                manual.contains("zrt-batch " + command.name));
    }
}

// Everything that is wrong, in the order of the checks, without any sample.
void TestPulsarAnalyses::tellsAllProblemsAtOnce()
{
    ObservationData header = TestSupport::makeRecording({1}, TestSupport::roughSample);
    header.npoints = 40000;
    header.samples = Samples();
    QVERIFY(findProblems("showNative", header, {}).empty());
    const std::pair<const char *, QStringList> rows[] = {
        {"sumPeriod", {"module", "channel", "ray", "firstPoint"}},
        {"sumChannelsDemoNoise", {"module", "ray", "leaveOutChannels", "firstPoint", "dispersion"}},
        {"sum4Dispersions", {"module", "ray", "leaveOutChannels", "firstPoint", "dispersion3"}},
        {"sumTimeDispersions",
         {"module", "ray", "leaveOutChannels", "firstPoint", "dispersion", "harmonicNum",
          "firstPointDelta"}},
        {"createFFA", {"module", "ray", "leaveOutChannels", "firstPoint", "dispersion"}}};
    for (const auto &[action, expected] : rows) {
        PulsarParameters parameters = findAnalysis(action)->presets;
        parameters.module = 2;
        parameters.ray = 0;
        parameters.channel = 34;
        parameters.channelsOff = "3,34";
        parameters.firstPoint = -1;
        parameters.dispersion = -26;
        parameters.dispersions[2] = -1;
        parameters.harmonicNum = 8192;
        parameters.startDelta = -5;
        QStringList fields;
        for (const FieldProblem &problem : findProblems(action, header, parameters))
            fields << problem.field;
        QCOMPARE(fields, expected);
    }
}

// An action without a row in the list is refused as one that does not exist; the manual has a
// paragraph of each that has a button.
void TestPulsarAnalyses::everyActionIsKnownToTheProgram()
{
    const QString manual = fileText("docs/help/README_zrt2_visual.md").simplified();
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        const Problems problems = findProblems(analysis.name, {}, {}); // an empty recording
        QVERIFY(!problems.empty());
        QVERIFY2(!problems.front().text.startsWith("There is no action"),
                 qPrintable(analysis.name));
        const QString label = analysis.label.simplified();
        QVERIFY2(label.isEmpty() || manual.contains("**" + label), qPrintable(label));
    }
}

ZRT_UNIT_TEST_MAIN(TestPulsarAnalyses)
#include "tst_pulsaranalyses.moc"
