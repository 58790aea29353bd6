#!/usr/bin/env bash
# Builds Pulsebox and makes the Debian package BUILD_DIR/pulsebox_VERSION_ARCH.deb:
# the programs in /usr/bin, a desktop entry, the logo as hicolor icons, the help,
# the copyright file, dependencies found from the programs' libraries, and a
# post-install step that gives /usr/bin/pulsebox cap_net_raw (never setuid).
#   scripts/package.sh [BUILD_DIR]     (default: build)
# Prints the package's path as its last line.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}

scripts/setup.sh dpkg-dev desktop-file-utils >&2

scripts/build.sh "$dir" >&2
version=$(sed -n 's/^project(Pulsebox VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
arch=$(dpkg --print-architecture)
work=$dir/package
root=$work/root
deb=$dir/pulsebox_${version}_${arch}.deb
rm -rf "$work" "$deb"
mkdir -p "$root/DEBIAN" "$root/usr/bin" "$root/usr/share/applications" \
         "$root/usr/share/icons/hicolor" "$root/usr/share/doc/pulsebox"

install -m 0755 --strip "$dir/src/pulsebox" "$root/usr/bin/pulsebox"
install -m 0755 --strip "$dir/tools/demonet/pulsebox-demonet" "$root/usr/bin/pulsebox-demonet"
install -m 0644 packaging/pulsebox.desktop "$root/usr/share/applications/pulsebox.desktop"
desktop-file-validate "$root/usr/share/applications/pulsebox.desktop"
"$dir/tools/icon/pulsebox-icon" "$root/usr/share/icons/hicolor"
install -m 0644 packaging/copyright "$root/usr/share/doc/pulsebox/copyright"
install -m 0644 resources/help/pulsebox-help.html "$root/usr/share/doc/pulsebox/pulsebox-help.html"
install -m 0644 README.md "$root/usr/share/doc/pulsebox/README.md"
install -m 0755 packaging/postinst "$root/DEBIAN/postinst"

# dpkg-shlibdeps wants a source package around it; a minimal one will do.
mkdir -p "$work/src/debian"
printf 'Source: pulsebox\n\nPackage: pulsebox\nArchitecture: any\n' > "$work/src/debian/control"
shlibs=$(cd "$work/src" && dpkg-shlibdeps -O "$PWD/../root/usr/bin/pulsebox" "$PWD/../root/usr/bin/pulsebox-demonet" \
         | sed -n 's/^shlibs:Depends=//p')
size=$(du -sk --exclude=DEBIAN "$root" | cut -f1)
cat > "$root/DEBIAN/control" <<CONTROL
Package: pulsebox
Version: $version
Architecture: $arch
Maintainer: Pulsebox developers <pulsebox@localhost>
Installed-Size: $size
Depends: $shlibs, libcap2-bin
Suggests: qt6-wayland
Section: games
Priority: optional
Description: Quake 2 server browser
 Pulsebox fetches a list of Quake 2 servers, pings every server with ICMP echo,
 asks each one for its name, map, players and version, and shows one row per
 server, fastest first. It keeps favorites, shows a server's settings and
 players, and starts the game connected to the chosen server.
 .
 The post-install step gives /usr/bin/pulsebox the cap_net_raw file capability,
 as Debian's ping package does, so that ordinary users can ping.
CONTROL
find "$root" -type d -exec chmod 0755 {} +
dpkg-deb --root-owner-group -Zxz --build "$root" "$deb" >&2
echo "$deb"
