#include "app/WidgetPrompter.h"

#include "app/PanelDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace {

// An alert's pop-up goes between its texts and its buttons, where it is read before answering.
// The box builds a new layout whenever its informative text changes, so this runs again then.
void placeAboveButtons(QMessageBox& box, QWidget* popUp) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (!grid || grid->indexOf(popUp) >= 0)
        return;
    auto* buttons = box.findChild<QDialogButtonBox*>();
    const int index = buttons ? grid->indexOf(buttons) : -1;
    if (index < 0) {
        grid->addWidget(popUp, grid->rowCount(), 1, 1, grid->columnCount() - 1);
        return;
    }
    int row = 0, column = 0, rowSpan = 0, columnSpan = 0;
    grid->getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
    grid->removeWidget(buttons);
    grid->addWidget(popUp, row, 1, 1, grid->columnCount() - 1);
    grid->addWidget(buttons, row + 1, column, rowSpan, columnSpan);
}

// Hands the keyboard back to the window that had it when a question opened. A window manager does
// so when the dialog closes; without one (or with one that leaves it to the program) nothing would.
class KeyboardReturn {
public:
    KeyboardReturn()
        : m_window(QApplication::activeWindow()) { }
    ~KeyboardReturn() {
        if (m_window && QApplication::activeWindow() != m_window)
            m_window->activateWindow();
    }

private:
    QPointer<QWidget> m_window;
};

} // namespace

QWidget* WidgetPrompter::askingWindow() const {
    // A question asked from a sheet (the review's confirmation) opens over the sheet, which waits
    // for it; over the main window beneath, it would not even get the keyboard without a window
    // manager to hand it over.
    if (QWidget* sheet = QApplication::activeModalWidget())
        return sheet;
    return m_window;
}

WidgetPrompter::WidgetPrompter(QWidget* window)
    : m_window(window) { }

Prompter::AlertAnswer WidgetPrompter::runAlert(Alert& alert) {
    const KeyboardReturn keyboard;
    QMessageBox box(askingWindow());
    box.setWindowModality(Qt::WindowModal);
    box.setIcon(QMessageBox::Warning);
    box.setText(alert.messageText);
    box.setInformativeText(alert.informativeText);

    const QStringList titles = alert.buttons.isEmpty() ? QStringList { QStringLiteral("OK") } : alert.buttons;
    QList<QAbstractButton*> buttons;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        // The first button is the default (Return); one titled "Cancel", or else the last button,
        // answers Escape.
        const QMessageBox::ButtonRole role = i == 0 ? QMessageBox::AcceptRole
            : titles[i] == QLatin1String("Cancel")  ? QMessageBox::RejectRole
                                                    : QMessageBox::ActionRole;
        QPushButton* button = box.addButton(titles[i], role);
        buttons.append(button);
        if (i == 0)
            box.setDefaultButton(button);
        if (titles[i] == QLatin1String("Cancel"))
            box.setEscapeButton(button);
    }
    if (!box.escapeButton())
        box.setEscapeButton(buttons.last());
    if (alert.showsSuppressionButton)
        box.setCheckBox(new QCheckBox(QStringLiteral("Do not show this message again")));

    QComboBox* popUp = nullptr;
    if (!alert.popUpItems.isEmpty()) {
        popUp = new QComboBox(&box);
        popUp->addItems(alert.popUpItems);
        popUp->setCurrentIndex(alert.popUpIndex);
        placeAboveButtons(box, popUp);
        QObject::connect(popUp, &QComboBox::currentIndexChanged, &box, [&alert, &box, popUp](int index) {
            alert.popUpIndex = index;
            if (alert.popUpChanged) {
                alert.popUpChanged(alert);
                box.setInformativeText(alert.informativeText);
                placeAboveButtons(box, popUp);
                // Setting the message last sizes the box to its new layout.
                box.setText(alert.messageText);
            }
        });
    }

    box.exec();
    AlertAnswer answer;
    const qsizetype clicked = buttons.indexOf(box.clickedButton());
    // Closing the box without a button counts as its last button (Cancel when there is one).
    answer.response = FirstButton + static_cast<int>(clicked >= 0 ? clicked : buttons.size() - 1);
    answer.suppressed = box.checkBox() && box.checkBox()->isChecked();
    answer.popUpIndex = popUp ? popUp->currentIndex() : alert.popUpIndex;
    return answer;
}

Prompter::PanelAnswer WidgetPrompter::runOpenPanel(const OpenPanel& panel) {
    const KeyboardReturn keyboard;
    PanelDialog dialog(panel, askingWindow());
    PanelAnswer answer;
    if (dialog.exec() != QDialog::Accepted)
        return answer;
    answer.response = OK;
    answer.urls = dialog.chosenPaths();
    return answer;
}
