#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/runanalysis.h"
#include "support/testmain.h"

#include <QFile>
#include <QMap>
#include <QXmlStreamReader>
#include <QtTest>

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

QMap<QString, Widget> widgetsOf(const QString &form, QStringList *order = nullptr)
{
    QMap<QString, Widget> widgets;
    QXmlStreamReader xml(fileText(form));
    QString current;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("widget")) {
            current = xml.attributes().value("name").toString();
            widgets[current].kind = xml.attributes().value("class").toString();
            if (order)
                *order << current;
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
    const bool isSwitch = widget.properties.contains("checked");
    return widget.properties.value(isSwitch                    ? "checked"
                                   : widget.kind == "WholeBox" ? "value"
                                                               : "text");
}

QString plain(const QString &text)
{
    return text.simplified();
}

} // namespace

class TestPulsarAnalyses : public QObject {
    Q_OBJECT

private slots:
    void pulsarFormHasTheFields_data();
    void pulsarFormHasTheFields();
    void searchFormHasTheFields();
    void formHasTheActions();
    void formHasTheNoiseMethods();
    void commandsTakeWhatTheirAnalysesRead_data();
    void commandsTakeWhatTheirAnalysesRead();
    void tellsAllProblemsAtOnce_data();
    void tellsAllProblemsAtOnce();
    void copiedSumKeepsItsPoints();
    void everyActionIsKnownToTheProgram_data();
    void everyActionIsKnownToTheProgram();
};

void TestPulsarAnalyses::pulsarFormHasTheFields_data()
{
    QTest::addColumn<QString>("option");
    const std::vector<PulsarAnalysis> &analyses = pulsarAnalyses();
    for (const PulsarField &field : pulsarFields()) {
        const bool isRead =
            std::any_of(analyses.begin(), analyses.end(), [&](const PulsarAnalysis &analysis) {
                return !analysis.label.isEmpty() && analysis.reads(field);
            });
        if (isRead && field.of && field.choices.empty())
            QTest::newRow(qPrintable(field.option)) << field.option;
    }
}

void TestPulsarAnalyses::pulsarFormHasTheFields()
{
    QFETCH(QString, option);
    const PulsarField &field = pulsarField(option);
    QMap<QString, Widget> widgets = widgetsOf("src/forms/pulsar/pulsarform.ui");
    const QMap<QString, Widget> panel = widgetsOf("src/plot/pulsargrafikinfo.ui");
    if (!widgets.contains(field.name))
        widgets = panel;
    QVERIFY2(widgets.contains(field.name), qPrintable(field.name));
    const Widget widget = widgets[field.name];

    if (widget.kind == "WholeBox") {
        QCOMPARE(widget.properties["minimum"].toDouble(), field.least);
        QCOMPARE(widget.properties["maximum"].toDouble(), field.most);
    }
    PulsarParameters presets = pulsarAnalyses().front().presets;
    presets.points = PulsarCalculate::fixedPoints; // which 0 stands for
    const QString start = startOf(widget);
    const bool isFilledIn = option == "--utc" || option == "--compare" || option == "--delta";
    if (isFilledIn)
        QCOMPARE(presetText(field, presets), option == "--delta" ? "0" : "");
    else
        QCOMPARE(start, presetText(field, presets));
}

void TestPulsarAnalyses::searchFormHasTheFields()
{
    const QMap<QString, Widget> widgets = widgetsOf("src/forms/ffa/ffaform.ui");
    const PulsarAnalysis &search = *findAnalysis("createFFA");
    const QStringList ofTheRecording = {"--module",     "--ray",        "--count",
                                        "--period-min", "--period-max", "--rmed-width"};
    int compared = 0;
    for (const PulsarField *field : search.fields) {
        // The form computes with these as they are, or chooses from a list.
        if (!widgets.contains(field->name) || ofTheRecording.contains(field->option))
            continue;
        const Widget widget = widgets[field->name];
        QCOMPARE(startOf(widget), presetText(*field, search.presets));
        if (widget.kind == "WholeBox") {
            QCOMPARE(widget.properties["minimum"].toDouble(), field->least);
            QCOMPARE(widget.properties["maximum"].toDouble(), field->most);
        }
        ++compared;
    }
    QCOMPARE(compared, 9);
}

void TestPulsarAnalyses::formHasTheActions()
{
    QStringList order;
    const QMap<QString, Widget> widgets = widgetsOf("src/forms/pulsar/pulsarform.ui", &order);
    QStringList names;
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        if (analysis.label.isEmpty())
            continue;
        names << analysis.name;
        QCOMPARE(widgets[analysis.name].kind, QString("QRadioButton"));
        QCOMPARE(widgets[analysis.name].properties["text"], analysis.label);
    }
    QStringList inTheForm;
    const int begin = order.indexOf("groupBox_action");
    for (const QString &name : order.mid(begin, order.indexOf("groupBox_averaging") - begin)) {
        if (widgets[name].kind == "QRadioButton")
            inTheForm << name;
    }
    QCOMPARE(names, inTheForm);
}

void TestPulsarAnalyses::formHasTheNoiseMethods()
{
    const QMap<QString, Widget> widgets = widgetsOf("src/forms/pulsar/pulsarform.ui");
    const std::vector<FieldChoice> &choices = pulsarField("--noise").choices;
    QCOMPARE(choices.size(), std::size_t(4));
    for (const FieldChoice &choice : choices) {
        QCOMPARE(widgets[choice.button].properties["text"], choice.label);
        QCOMPARE(widgets[choice.button].properties["checked"] == "true",
                 choice.value == PulsarParameters().noise);
    }
}

void TestPulsarAnalyses::commandsTakeWhatTheirAnalysesRead_data()
{
    QTest::addColumn<QString>("command");
    for (const PulsarCommand &command : pulsarCommands())
        QTest::newRow(qPrintable(command.name)) << command.name;
}

void TestPulsarAnalyses::commandsTakeWhatTheirAnalysesRead()
{
    QFETCH(QString, command);
    QStringList offered = {"--module", "--ray"}; // which every command takes
    for (const PulsarCommand &known : pulsarCommands()) {
        if (known.name == command)
            for (const CommandOption &option : known.options)
                offered << option.option;
    }
    QStringList read;
    int analyses = 0;
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        if (analysis.command != command)
            continue;
        ++analyses;
        for (const PulsarField *field : analysis.fields)
            read << field->option;
    }
    QVERIFY(analyses > 0);
    read.removeDuplicates();
    read.sort();
    offered.sort();
    QCOMPARE(offered, read);
    QVERIFY(fileText("README.md").contains("`" + command + "`") ||
            fileText("README.md").contains("zrt-batch " + command));
}

void TestPulsarAnalyses::tellsAllProblemsAtOnce_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QStringList>("fields");
    const auto row = [](const char *action, const QStringList &fields) {
        QTest::newRow(action) << action << fields;
    };
    row("sumPeriod", {"module", "channel", "ray", "firstPoint"});
    row("sumChannelsDemoNoise", {"module", "ray", "firstPoint", "dispersion"});
    row("sumChannelsAndFourier", {"module", "ray", "firstPoint", "dispersion", "harmonicNum"});
    row("sum4Dispersions", {"module", "ray", "firstPoint", "dispersion3"});
    row("sumTimeDispersions",
        {"module", "ray", "firstPoint", "dispersion", "harmonicNum", "firstPointDelta"});
    row("createFFA", {"module", "ray", "firstPoint", "dispersion"});
}

// Everything that is wrong, in the order of the checks, without any sample.
void TestPulsarAnalyses::tellsAllProblemsAtOnce()
{
    QFETCH(QString, action);
    ObservationData header;
    header.npoints = 40000;
    header.modules = header.rays = 1;
    header.channels = 33;
    header.tresolution = 0.0125;
    for (int band = 0; band < 33; ++band)
        header.fbands.push_back(109 + 0.08 * band);
    PulsarParameters parameters = findAnalysis(action)->presets;
    QVERIFY(findProblems("showNative", header, {}).empty());
    parameters.module = 2;
    parameters.ray = 0;
    parameters.channel = 34;
    parameters.firstPoint = -1;
    parameters.dispersion = -26;
    parameters.dispersions[2] = -1;
    parameters.harmonicNum = 8192;
    parameters.startDelta = -5;
    QStringList fields;
    for (const FieldProblem &problem : findProblems(action, header, parameters)) {
        fields << problem.field;
        QVERIFY(!problem.text.isEmpty());
    }
    QTEST(fields, "fields");
}

void TestPulsarAnalyses::copiedSumKeepsItsPoints()
{
    PulsarParameters parameters = pulsarPresets();
    parameters.points = 5000;
    QCOMPARE(pulsarCommand("sumChannelsDemoNoise", parameters, "a.pnt"),
             QString("zrt-batch sum --count 5000 a.pnt"));
}

void TestPulsarAnalyses::everyActionIsKnownToTheProgram_data()
{
    QTest::addColumn<QString>("action");
    for (const PulsarAnalysis &analysis : pulsarAnalyses())
        QTest::newRow(qPrintable(analysis.name)) << analysis.name;
}

// An action without a row in PulsarCalculate is refused as one that does not exist; the manual
// has a paragraph of each that has a button.
void TestPulsarAnalyses::everyActionIsKnownToTheProgram()
{
    QFETCH(QString, action);
    PulsarCalculate calculate({}, {});
    QVERIFY(!calculate.validate(action)); // an empty recording
    QVERIFY2(!calculate.failure().startsWith("There is no action"), qPrintable(action));
    const QString label = plain(findAnalysis(action)->label);
    if (!label.isEmpty())
        QVERIFY2(plain(fileText("docs/help/README_zrt2_visual.md")).contains("**" + label),
                 qPrintable(label));
}

ZRT_UNIT_TEST_MAIN(TestPulsarAnalyses)
#include "tst_pulsaranalyses.moc"
