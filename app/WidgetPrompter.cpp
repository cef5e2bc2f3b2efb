#include "app/WidgetPrompter.h"

#include "app/PanelDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QMessageBox>
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

} // namespace

WidgetPrompter::WidgetPrompter(QWidget* window)
    : m_window(window) { }

Prompter::AlertAnswer WidgetPrompter::runAlert(Alert& alert) {
    QMessageBox box(m_window);
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
    PanelDialog dialog(panel, m_window);
    PanelAnswer answer;
    if (dialog.exec() != QDialog::Accepted)
        return answer;
    answer.response = OK;
    answer.urls = dialog.chosenPaths();
    return answer;
}
