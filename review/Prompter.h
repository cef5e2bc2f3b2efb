#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

// Every modal question the program asks: alerts (with an optional suppression box and an optional
// pop-up accessory) and open panels. Nothing else in the program opens a dialog, so a test replaces
// the one implementation with scripted answers and drives every flow without a window.
//
// Calls are synchronous: they return when the user has answered.
class Prompter {
public:
    // Alert return codes: the n-th button returns 1000 + (n - 1).
    static constexpr int FirstButton = 1000;
    static constexpr int SecondButton = 1001;
    static constexpr int ThirdButton = 1002;
    // Panel return codes.
    static constexpr int Cancel = 0;
    static constexpr int OK = 1;

    struct Alert {
        QString messageText;
        QString informativeText;
        QStringList buttons; // in order; none means one "OK" button
        bool showsSuppressionButton = false;
        QStringList popUpItems; // an accessory pop-up button, when not empty
        int popUpIndex = 0;
        // The pop-up's action while the alert is open: it may rewrite the texts.
        std::function<void(Alert&)> popUpChanged;
    };

    struct AlertAnswer {
        int response = FirstButton;
        bool suppressed = false; // the suppression box was ticked
        int popUpIndex = 0; // the pop-up's item when the alert closed
    };

    struct OpenPanel {
        QString title;
        QString prompt; // the confirm button's text
        QString message;
        bool canChooseFiles = true;
        bool canChooseDirectories = false;
        bool allowsMultipleSelection = false;
        bool canCreateDirectories = false;
        QByteArray directory; // where it opens
        // The panel's delegate: only paths it accepts can be chosen (none: everything).
        std::function<bool(const QByteArray& path)> shouldEnable;
    };

    struct PanelAnswer {
        int response = Cancel;
        QList<QByteArray> urls; // absolute byte paths
    };

    virtual ~Prompter() = default;
    virtual AlertAnswer runAlert(Alert& alert) = 0;
    virtual PanelAnswer runOpenPanel(const OpenPanel& panel) = 0;
};
