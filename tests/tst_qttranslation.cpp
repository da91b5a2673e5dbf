// Qt's own texts in the locale's language: the standard buttons of the
// host's settings editor and of the module's search panel, and zuhost's
// command line help; and zuhost without a translation for its locale.

#include <QtTest>

#include <QDialogButtonBox>
#include <QLibraryInfo>
#include <QLocale>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTranslator>

#include <memory>

#include "pluginhost.h"
#include "qttranslation.h"
#include "settingsdialog.h"
#include "settingsstore.h"
#include "testsupport.h"

namespace {

const QLocale russian(QLocale::Russian, QLocale::Russia);

QString qtTranslations()
{
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
}

bool hasRussianTranslation()
{
    return QFile::exists(qtTranslations() + QStringLiteral("/qtbase_ru.qm"));
}

const char noRussian[] = "Qt's Russian translation is not installed (Debian: qttranslations5-l10n)";

QString buttonText(QDialogButtonBox *box, QDialogButtonBox::StandardButton which)
{
    QPushButton *button = box ? box->button(which) : nullptr;
    return button ? button->text() : QString();
}

QString settingsDialogCancelText()
{
    SettingsDialog dialog(QStringLiteral("page.0"), SettingsList());
    return buttonText(dialog.findChild<QDialogButtonBox *>(), QDialogButtonBox::Cancel);
}

// The environment of a process under the locale: LC_ALL wins over the
// C.UTF-8 that ctest sets, and LANGUAGE would win over both.
QProcessEnvironment localeEnvironment(const QString &locale)
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LC_ALL"), locale);
    environment.insert(QStringLiteral("LANG"), locale);
    environment.insert(QStringLiteral("LANGUAGE"), QString());
    return environment;
}

} // namespace

class TestQtTranslation : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void settingsButtonsInRussian();
    void searchPanelCloseInRussian();
    void missingTranslationKeepsEnglish();
    void hostHelpInRussian();
    void hostRunsWithoutTranslationForItsLocale();

private:
    std::unique_ptr<QTranslator> m_translator;
};

void TestQtTranslation::cleanup()
{
    m_translator.reset();
}

void TestQtTranslation::settingsButtonsInRussian()
{
    if (!hasRussianTranslation())
        QSKIP(noRussian);
    QCOMPARE(settingsDialogCancelText(), QStringLiteral("Cancel"));
    m_translator.reset(installQtTranslation(russian, qtTranslations()));
    QVERIFY(m_translator);
    QCOMPARE(settingsDialogCancelText(), QStringLiteral("Отмена"));

    m_translator.reset();
    QCOMPARE(settingsDialogCancelText(), QStringLiteral("Cancel"));
}

// The module's widgets take Qt's texts from the host's translation.
void TestQtTranslation::searchPanelCloseInRussian()
{
    if (!hasRussianTranslation())
        QSKIP(noRussian);
    m_translator.reset(installQtTranslation(russian, qtTranslations()));
    QVERIFY(m_translator);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    SettingsStore store(dir.filePath(QStringLiteral("host.ini")));
    store.setValue(QStringLiteral("programsDir"), dir.path());
    PluginHost host(&store);
    QVERIFY2(host.load(QStringLiteral(ZU_MODULE_PATH)), qPrintable(host.errorString()));
    auto *buttons = host.window()->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QCOMPARE(buttonText(buttons, QDialogButtonBox::Close), QStringLiteral("Закрыть"));
}

void TestQtTranslation::missingTranslationKeepsEnglish()
{
    QTemporaryDir empty;
    QVERIFY(empty.isValid());
    m_translator.reset(installQtTranslation(russian, empty.path()));
    QVERIFY(!m_translator);
    QCOMPARE(settingsDialogCancelText(), QStringLiteral("Cancel"));
}

// zuhost loads the translation for the locale of its environment.
void TestQtTranslation::hostHelpInRussian()
{
    if (!hasRussianTranslation())
        QSKIP(noRussian);
    const QByteArray english("Displays help on commandline options.");
    const ProcessRun inC = runProcess(QStringLiteral(ZU_HOST_PATH), {QStringLiteral("--help")});
    QVERIFY2(inC.finished, inC.errors.constData());
    QVERIFY2(inC.output.contains(english), inC.output.constData());

    const ProcessRun inRussian = runProcess(QStringLiteral(ZU_HOST_PATH), {QStringLiteral("--help")},
                                            localeEnvironment(QStringLiteral("ru_RU.UTF-8")));
    QVERIFY2(inRussian.finished, inRussian.errors.constData());
    QCOMPARE(inRussian.exitCode, 0);
    // zuhost's own option texts stay as they are.
    QVERIFY2(inRussian.output.contains("--quit-after"), inRussian.output.constData());
    QVERIFY2(!inRussian.output.contains(english), inRussian.output.constData());
}

// No Qt translation exists for Greenlandic: zuhost runs with Qt's English.
void TestQtTranslation::hostRunsWithoutTranslationForItsLocale()
{
    QVERIFY(!QFile::exists(qtTranslations() + QStringLiteral("/qtbase_kl.qm")));
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QProcessEnvironment greenlandic = localeEnvironment(QStringLiteral("kl_GL.UTF-8"));

    const ProcessRun help = runProcess(QStringLiteral(ZU_HOST_PATH), {QStringLiteral("--help")},
                                       greenlandic);
    QVERIFY2(help.finished, help.errors.constData());
    QVERIFY2(help.output.contains("Displays help on commandline options."), help.output.constData());

    const ProcessRun run = runProcess(QStringLiteral(ZU_HOST_PATH),
            {QStringLiteral("--module"), QStringLiteral(ZU_MODULE_PATH),
             QStringLiteral("--settings"), dir.filePath(QStringLiteral("host.ini")),
             QStringLiteral("--dir"), dir.path(),
             QStringLiteral("--quit-after"), QStringLiteral("0")},
            greenlandic);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
}

QTEST_MAIN(TestQtTranslation)

#include "tst_qttranslation.moc"
