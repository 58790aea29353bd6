#pragma once
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

class QSystemTrayIcon;

// The icon that stands for a hidden main window. It reports the two mouse events
// the program acts on by their old message numbers: 513 for the press of a first
// click, 515 for a double click. Every other event goes unreported.
class TrayIcon : public QObject {
    Q_OBJECT
public:
    static constexpr int kLeftPress = 513;
    static constexpr int kLeftDoubleClick = 515;

    using QObject::QObject;
    // The desktop's tray when it has one, else a stand-in window.
    static TrayIcon *forDesktop(QWidget *owner);

    virtual void add(const QIcon &icon, const QString &tip) = 0;
    virtual void remove() = 0;
    virtual bool isShown() const = 0;
    // A short message from the icon ("NAME joined SERVER"), which screen readers
    // announce. Icons that cannot show one ignore it.
    virtual void notify(const QString &title, const QString &text) { (void)title, (void)text; }

    // Whether the owner still waits to see if a first click becomes a double
    // click: a click meanwhile is that double click's second half.
    void setFirstClickPending(std::function<bool()> pending) { firstClickPending_ = std::move(pending); }
    bool firstClickPending() const { return firstClickPending_ && firstClickPending_(); }

signals:
    void mouseEvent(int number);

private:
    std::function<bool()> firstClickPending_;
};

// The desktop's notification area (StatusNotifierItem or an XEmbed tray).
class SystemTray : public TrayIcon {
    Q_OBJECT
public:
    explicit SystemTray(QObject *parent = nullptr);
    void add(const QIcon &icon, const QString &tip) override;
    void remove() override;
    bool isShown() const override;
    void notify(const QString &title, const QString &text) override;

private:
    QSystemTrayIcon *icon_;
};

// Where no tray exists (plain X servers, GNOME without its tray extension): a
// small frameless icon window that stays above the others in a corner of the
// work area, with the tip as tool tip, taking the same clicks.
class StandInTray : public TrayIcon {
    Q_OBJECT
public:
    explicit StandInTray(QObject *parent = nullptr);
    ~StandInTray() override;
    void add(const QIcon &icon, const QString &tip) override;
    void remove() override;
    bool isShown() const override;
    // A small note window beside the icon, closing itself after a while.
    void notify(const QString &title, const QString &text) override;
    QWidget *window() const { return window_; }
    QWidget *note() const { return note_; }

private:
    QPointer<QWidget> window_;
    QPointer<QWidget> note_;
};
