#include "editwindow.h"
#include "ui_editwindow.h"

#include "codepage.h"
#include "iconbuttonstyle.h"
#include "plugindescriptor.h"
#include "programwatcher.h"
#include "searchreplace.h"

#include <QDir>
#include <QTextCodec>

#include <utility>

EditWindow::EditWindow(PluginInterface *plugin, QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::EditWindow)
    , plugin(plugin)
{
    ui->setupUi(this);
    // The form places the layout in a fixed rectangle; as the central widget
    // it follows the window's size instead.
    setCentralWidget(ui->horizontalLayoutWidget);
    showListButtonsAsIcons();

    dirWatcher.addPath(QDir::currentPath());
    programFiles = new ProgramWatcher(this);

    ui->currProjBox->setEnabled(false);
    ui->consoleEdit->setFixedHeight(100);
    disableProgProj();

    search = new SearchReplace(this);
    ui->seacrhButton->setChecked(false);
    ui->seacrhButton->setEnabled(false);

    makeConnections();
    dirChanged(QString());
}

EditWindow::~EditWindow()
{
    delete ui;
}

void EditWindow::showListButtonsAsIcons()
{
    auto *iconStyle = new IconButtonStyle;
    iconStyle->setParent(this);
    for (QPushButton *button : { ui->newProgButton, ui->editButton, ui->renameButton,
                                 ui->addprjButton, ui->delProgButton, ui->newprjButton,
                                 ui->editAllPrjButton, ui->renamePrjButton, ui->debugProjButton,
                                 ui->delprjButton, ui->newProgPrjButton, ui->editProgPrjButton,
                                 ui->downInPrjButton, ui->upInPrjButton, ui->removeProgPrjButton })
        button->setStyle(iconStyle);
}

void EditWindow::makeConnections()
{
    connect(ui->tabWidget, &QTabWidget::currentChanged, this, qOverload<int>(&EditWindow::tabChanged));
    connect(ui->tabWidget, &QTabWidget::tabCloseRequested, this, qOverload<int>(&EditWindow::tabClose));
    connect(ui->programsList, &QListWidget::currentRowChanged, this, &EditWindow::curProgChanged);
    connect(ui->projectsList, &QListWidget::currentRowChanged, this, &EditWindow::curProjChanged);
    connect(ui->currentProjectList, &QListWidget::currentRowChanged, this, &EditWindow::curProgPrjChanged);
    connect(&dirWatcher, &QFileSystemWatcher::directoryChanged, this, &EditWindow::dirChanged);
    for (QListWidget *list : { ui->programsList, ui->projectsList, ui->currentProjectList }) {
        connect(list->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, &EditWindow::nameEditClosed);
        connect(list, &QListWidget::itemEntered, this, &EditWindow::onItemEntered);
    }
    // One slot serves a button of the programs page and its counterparts.
    connect(ui->newprjButton, &QPushButton::clicked, this, &EditWindow::on_newProgButton_clicked);
    connect(ui->newProgPrjButton, &QPushButton::clicked, this, &EditWindow::on_newProgButton_clicked);
    connect(ui->editProgPrjButton, &QPushButton::clicked, this, &EditWindow::on_editButton_clicked);
    connect(ui->delprjButton, &QPushButton::clicked, this, &EditWindow::on_delProgButton_clicked);
    connect(search, &QDialog::rejected, this, &EditWindow::hideSearch);
    connect(search->searchNext(), &QPushButton::clicked, this, &EditWindow::searchRequested);
    connect(search->replaceIt(), &QPushButton::clicked, this, &EditWindow::replaceRequested);
    connect(search->replaceAll(), &QPushButton::clicked, this, &EditWindow::replaceAllRequested);
}

// A negative value leaves a button as it is, 0 disables it, anything else
// enables it.
void EditWindow::setEditButtons(int save, int saveAs, int undo, int redo, int compile)
{
    const std::pair<QWidget *, int> buttons[] = {
        { ui->saveProgramButton, save },
        { ui->saveAsProgramButton, saveAs },
        { ui->undoButton, undo },
        { ui->redoButton, redo },
        { ui->compileProgramButton, compile },
    };
    for (const auto &button : buttons) {
        if (button.second >= 0)
            button.first->setEnabled(button.second != 0);
    }
}

void EditWindow::enableProgProj()
{
    QListWidgetItem *current = ui->projectsList->currentItem();
    ui->currProjBox->setTitle(current ? current->text() : QString());
    ui->currProjBox->setEnabled(true);
    ui->addprjButton->setEnabled(true);
    ui->currentProjectList->setEnabled(true);
}

void EditWindow::disableProgProj()
{
    ui->currProjBox->setTitle(QString());
    ui->currentProjectList->clear();
    ui->currProjBox->setEnabled(false);
    ui->addprjButton->setEnabled(false);
}

void EditWindow::run()
{
    // Without an answer in time, start-up goes on with no names; they are
    // added when the answer comes.
    askHost(tablesArrived, 2000, [this] { emit tablesRequest(); });
    takeArrivedTables();

    openProgsList(QStringList(openedList));
    findOpenTab(openedTab);
}

bool EditWindow::stop()
{
    stopped = true;
    emit changeVariant(QStringLiteral("MainWinState"), saveState(), false, true);
    emit changeVariant(QStringLiteral("MainWinOpen"), isVisible(), false, true);
    storeSearchSettings();
    emit pluginDead(pluginDescriptor(plugin));
    return true;
}

void EditWindow::exchangeSettings(SettingsList list, QString *a, QString *b)
{
    plugin->exchangeSettings(list, a, b);
}

void EditWindow::on_settingsButton_clicked()
{
    // The host names the plug-in's settings page "<title>.<instance>".
    const SEGINTERFACES *descriptor = pluginDescriptor(plugin);
    const QString title = windows1251()->toUnicode(descriptor->title);
    emit editSetting(title + QStringLiteral(".%1").arg(descriptor->instanceNumber), QString());
}
