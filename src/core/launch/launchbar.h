#pragma once
#include "shell/serverrow.h"

#include <QString>
#include <QStringList>

#include <optional>

// The launcher bar's decisions: its buttons from the favorites, its size, and
// what a status reply shows.
namespace LaunchBar {

constexpr int kBarWidth = 1935;       // twips
constexpr int kBarHeight = 930;       // with one favorite
constexpr int kFrameHeight = 855;
constexpr int kButtonLeft = 120;
constexpr int kButtonTop = 240;
constexpr int kButtonWidth = 1695;
constexpr int kButtonHeight = 495;
constexpr int kButtonStep = 545;      // from one button's top to the next
constexpr int kDefaultPort = 27910;

// One favorite as the bar uses it: Address, Port and the description in HostName.
struct Entry {
    ServerRec server;
    QString caption;
};

// The address is lower-cased and split at its first ":"; a port whose value is 0
// (empty, "0", not a number) or no port at all means 27910. Host names are not
// looked up: they give the address 0. The caption is the description without
// its outer spaces, or the address as stored when the description is 50 NULs.
Entry entryOf(const QString &address, const QString &description);

// The bar's and its frame's height for `favorites` buttons: one button per 545
// twips beyond the first; with none, 545 twips lower than designed.
int barHeight(int favorites);
int frameHeight(int favorites);
int buttonTop(int index);

// What a status reply (as received, one character per byte) shows in the pop-up.
struct StatusView {
    // Every value of a key containing "hostname" on the server line, in order:
    // each one renames a button that shows an address.
    QStringList hostNames;
    QString text;  // "PLAYER STATUS:", CR LF, the player lines with CR LF ends
};
// nullopt for a reply shorter than the 10 characters that open every status reply.
std::optional<StatusView> statusView(const QString &reply);

// A caption that shows an address rather than a name: it begins with a digit.
bool captionIsAddress(const QString &caption);
}
