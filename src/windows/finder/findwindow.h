#pragma once
#include "finder/serverfilter.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

// Find and Filter: the player search, the filters and the friends watch, in a
// window of their own so that the main window stays as designed. It only shows
// and edits settings; the main window applies them.
class FindWindow : public QWidget {
    Q_OBJECT
public:
    explicit FindWindow(QWidget *parent = nullptr);

    void setSettings(const FinderSettings &settings);
    // The settings as the controls show them; the search text is filter.playerText.
    FinderSettings settings() const;
    // "Showing N of M rows", and whether the players were asked for.
    void showCounts(int shown, int total, bool playersAsked);

protected:
    void keyPressEvent(QKeyEvent *event) override;  // Escape closes

signals:
    void changed();
    void friendsClicked();

private:
    QLabel *playerSearchLabel_, *versionLabel_, *mapLabel_, *maxPingLabel_, *shownLabel_, *playersHintLabel_;
    QLineEdit *playerSearchEdit_, *mapEdit_;
    QCheckBox *hideEmptyCheck_, *hideFullCheck_, *hideBotsCheck_, *watchCheck_;
    QComboBox *versionBox_;
    QSpinBox *maxPingBox_, *watchSecondsBox_;
    QPushButton *friendsButton_, *closeButton_;
    bool loading_ = false;
};
