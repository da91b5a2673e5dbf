#include "textedit.h"

#include "editwindow.h"
#include "makesetting.h"
#include "searchreplace.h"

#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>

#include <algorithm>
#include <memory>

// Texts the host shows are windows-1251 bytes.
// "Редактор исходных текстов Zu"
static const char titleText[] =
    "\xd0\xe5\xe4\xe0\xea\xf2\xee\xf0\x20\xe8\xf1\xf5\xee\xe4\xed\xfb\xf5\x20"
    "\xf2\xe5\xea\xf1\xf2\xee\xe2\x20\x5a\x75";
// "Системные"
static const char groupText[] = "\xd1\xe8\xf1\xf2\xe5\xec\xed\xfb\xe5";
// "Редактор исходных текстов, с подсветкой синтаксиса"
static const char descriptionText[] =
    "\xd0\xe5\xe4\xe0\xea\xf2\xee\xf0\x20\xe8\xf1\xf5\xee\xe4\xed\xfb\xf5\x20"
    "\xf2\xe5\xea\xf1\xf2\xee\xe2\x2c\x20\xf1\x20\xef\xee\xe4\xf1\xe2\xe5\xf2"
    "\xea\xee\xe9\x20\xf1\xe8\xed\xf2\xe0\xea\xf1\xe8\xf1\xe0";

const SocketRecord TextEdit::socketz[] = {
    { 0, "ZuTablesStartRequest2Arrays", "2tablesRequest()", 1, 1, 0 },
    { 0, nullptr, "1tablesAnswer( ARRAY*, ARRAY* )", 0, 0, 0 },
    { 0, "operToolTipQString", "2operToolTipRequest(QString)", 1, 1, 0 },
    { 0, nullptr, "1operToolTipAnswer(QString)", 0, 0, 0 },
    { 0, "_LocalMenuRunSignalQString", "2tryToCompile( QString )", 0, 0, 0 },
    { 0, "saveFileIfChanged", "1saveFileIfChanged(QString)", 0, 0, 0 },
    { 0, "ZuComplieErrorMsgQString", "1parseMessage(QString)", 0, 0, 0 },
    { 0, "newSettingsProgramsDirQStringQString", "1newSettingsProgramsDir(QString,QString)", 0, 0, 0 },
    { 0, "_LocalMenuEditSignalQString", "1addProgListAndEdit(QString)", 0, 0, 0 },
    { 0, "compilerErrorFoundBool", "2compilerErrorFound(bool)", 1, 0, 0 },
    { 0, "editSetting(QString,QString)", "2editSetting(QString,QString)", 0, 0, 0 },
};

const SEGINTERFACES TextEdit::interfaces = {
    titleText,
    "zusrceditor",
    0,
    groupText,
    0,
    // The host's record type is not const; the static table is only ever
    // copied, never written through this pointer.
    const_cast<SocketRecord *>(socketz),
    sizeof(socketz) / sizeof(socketz[0]),
    0,
    1,
    0,
    0,
    nullptr,
    0,
    nullptr,
    0,
    "1run()",
    "1stop()",
    0,
    0,
    descriptionText,
    0,
};

static void setHistory(QComboBox *box, const QStringList &texts)
{
    box->clear();
    box->insertItems(0, texts);
}

TextEdit::TextEdit()
    : m_descriptor(interfaces)
{
    // The host may rewrite the socket records of an instance; give each
    // instance records of its own. The texts stay shared with the static data.
    if (m_descriptor.sockets) {
        std::unique_ptr<SocketRecord[]> sockets(new SocketRecord[m_descriptor.socketCount]());
        std::copy_n(interfaces.sockets, m_descriptor.socketCount, sockets.get());
        m_descriptor.sockets = sockets.release();
    }

    m_window = new EditWindow(this);
    m_descriptor.runObject = m_window;
    m_descriptor.socketObject = m_window;
}

// The window has no parent and is not ours to delete: the host closes and
// disposes of it.
TextEdit::~TextEdit()
{
    if (m_descriptor.sockets != interfaces.sockets)
        delete[] m_descriptor.sockets;
}

// Declares every setting, in this order, and applies what the host keeps.
SettingsList TextEdit::exchangeSettings(SettingsList list, QString *, QString *)
{
    const QVariant none(0);
    const QVariant intStep(10);
    auto declare = [&list](const char *key, const QVariant &value, QVariant::Type type,
                                  const QString &description = QString(),
                                  const QVariant &range = QVariant(0),
                                  const QVariant &step = QVariant(0),
                                  const QString &help = QString()) {
        return makeSetting(&list, QString::fromLatin1(key), value, type, description,
                           range, step, help, QString());
    };
    SearchReplace *search = m_window->searchPanel();

    m_window->setAutoComplete(
        declare("AutoComplete", true, QVariant::Bool,
                tr(".Автоматическое дополнение ключевых слов")).toBool());
    m_window->setAutoSaveOnExec(
        declare("AutoSaveOnExec", true, QVariant::Bool,
                tr(".Автоматическое сохранение при выполнении и отладке"), none, none,
                tr("Если установлено, то при запуске выполнения или отладки\n"
                   "из меню программы на схеме, будет производиться автоматическое\n"
                   "сохранение исходного текста, если он изменен. Тогда будет\n"
                   "автоматически производиться компиляция перед запуском. Если не\n"
                   "установлено, то для сохранения исходного текста надо будет нажимать\n"
                   "кнопку для сохранения в редакторе.")).toBool());
    m_window->setProgramsDir(declare("programsDir", QStringLiteral("."), QVariant::String).toString());
    m_window->setMaxConsoleLines(
        declare("maxLines", 100, QVariant::Int,
                tr(".Количество строк в сообщениях об ошибках"), QVariantList { 50, 500 }, intStep,
                tr("Сохраняются от 50 до 500 строк (по-умолчанию 100).")).toUInt());
    m_window->setMaxPosHistoryLength(
        declare("maxPosHistoryLength", 50, QVariant::Int,
                tr(".Количество запоминаемых позиций курсора"), QVariantList { 20, 200 }, intStep,
                tr("Число в диапазоне от 20 до 200 (по-умолчанию 50)")).toInt());
    search->inprogram()->setChecked(declare("inprogram", true, QVariant::Bool).toBool());
    search->entireproject()->setChecked(declare("entireproject", false, QVariant::Bool).toBool());
    search->ignorecase()->setChecked(declare("ignorecase", false, QVariant::Bool).toBool());
    search->wholeword()->setChecked(declare("wholeword", false, QVariant::Bool).toBool());
    setHistory(search->searchFor(), declare("searchFor", QStringList(), QVariant::StringList).toStringList());
    setHistory(search->replaceTo(), declare("replaceTo", QStringList(), QVariant::StringList).toStringList());
    m_window->setOpenedList(declare("openedlist", QStringList(), QVariant::StringList).toStringList());
    m_window->setOpenedTab(declare("openedtab", QString(), QVariant::String).toString());
    m_window->restoreState(declare("MainWinState", m_window->saveState(), QVariant::ByteArray).toByteArray());
    if (declare("MainWinOpen", m_window->isVisible(), QVariant::Bool).toBool())
        m_window->show();

    return list;
}
