#!/usr/bin/env bash
# Makes the Debian package BUILD_DIR/pulsebox_VERSION_ARCH.deb from the plain build
# in BUILD_DIR (built first when it is not there yet; an existing build is only
# brought up to date): the programs in /usr/bin, their manual pages, a desktop
# entry, AppStream metadata, the logo as hicolor icons, the help (registered with
# doc-base), the changelog and copyright, dependencies found from the programs'
# libraries, and a post-install step that gives /usr/bin/pulsebox and
# /usr/bin/pulsebox-query cap_net_raw (never setuid).
#   scripts/package.sh [BUILD_DIR]     (default: build)
# Prints the package's path as its last line.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}

scripts/setup.sh dpkg-dev desktop-file-utils help2man >&2

if [ -f "$dir/build.ninja" ]; then
    cmake --build "$dir" --target pulsebox pulsebox-query pulsebox-demonet pulsebox-icon >&2
else
    scripts/build.sh "$dir" >&2
fi

version=$(sed -n 's/^project(Pulsebox VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# The package's version is the program's, then the package's own revision.
logged=$(dpkg-parsechangelog -l packaging/changelog -SVersion)
if [ "$version" != "${logged%-*}" ]; then
    echo "package.sh: CMakeLists.txt says version $version, packaging/changelog's latest entry $logged" >&2
    exit 1
fi
version=$logged
# Dates inside the package (manual pages, file times) come from the changelog,
# so the same sources give the same package.
export SOURCE_DATE_EPOCH
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/changelog -STimestamp)
metainfo=org.pulsebox.pulsebox.metainfo.xml

arch=$(dpkg --print-architecture)
work=$(realpath -m "$dir")/package
root=$work/root
deb=$dir/pulsebox_${version}_${arch}.deb
doc=$root/usr/share/doc/pulsebox
man1=$root/usr/share/man/man1
rm -rf "$work" "$deb"
mkdir -p "$root/DEBIAN" "$root/usr/bin" "$root/usr/share/applications" "$root/usr/share/metainfo" \
         "$root/usr/share/icons/hicolor" "$root/usr/share/doc-base" "$doc" "$man1"

installed=()
for program in src/pulsebox tools/query/pulsebox-query tools/demonet/pulsebox-demonet; do
    target=$root/usr/bin/$(basename "$program")
    install -m 0755 "$dir/$program" "$target"
    strip --remove-section=.comment --remove-section=.note --strip-unneeded "$target"
    installed+=("$target")
done

# Manual pages: the command-line tools' from their own --help and --version,
# the window's from its hand-written page.
# Run by name, so that their usage lines name the command and not this folder.
for tool in pulsebox-query pulsebox-demonet; do
    PATH="$root/usr/bin:$PATH" help2man --no-info --include="packaging/man/$tool.h2m" --output="$work/$tool.1" "$tool"
done
sed -e "s/@VERSION@/${version%-*}/" -e "s/@DATE@/$(date -u -d "@$SOURCE_DATE_EPOCH" '+%B %Y')/" \
    packaging/man/pulsebox.1.in > "$work/pulsebox.1"
for page in pulsebox pulsebox-query pulsebox-demonet; do
    gzip -9n < "$work/$page.1" > "$man1/$page.1.gz"
    chmod 0644 "$man1/$page.1.gz"
done

install -m 0644 packaging/pulsebox.desktop "$root/usr/share/applications/pulsebox.desktop"
desktop-file-validate "$root/usr/share/applications/pulsebox.desktop"
install -m 0644 "packaging/$metainfo" "$root/usr/share/metainfo/$metainfo"
"$dir/tools/icon/pulsebox-icon" "$root/usr/share/icons/hicolor"
install -m 0644 packaging/copyright "$doc/copyright"
gzip -9n < packaging/changelog > "$doc/changelog.Debian.gz"
gzip -9n < README.md > "$doc/README.md.gz"
install -m 0644 resources/help/pulsebox-help.html "$doc/pulsebox-help.html"
install -m 0644 packaging/pulsebox.doc-base "$root/usr/share/doc-base/pulsebox.pulsebox-help"
chmod 0644 "$doc"/*.gz
install -m 0755 packaging/postinst "$root/DEBIAN/postinst"

# dpkg-shlibdeps wants a source package around it; a minimal one will do.
mkdir -p "$work/src/debian"
printf 'Source: pulsebox\n\nPackage: pulsebox\nArchitecture: any\n' > "$work/src/debian/control"
shlibs=$(cd "$work/src" && dpkg-shlibdeps -O "${installed[@]}" | sed -n 's/^shlibs:Depends=//p')
size=$(du -sk --exclude=DEBIAN "$root" | cut -f1)
cat > "$root/DEBIAN/control" <<CONTROL
Package: pulsebox
Version: $version
Architecture: $arch
Maintainer: The Pulsebox developers <developers@pulsebox.org>
Installed-Size: $size
Depends: $shlibs, libcap2-bin
Suggests: qt6-wayland
Section: net
Priority: optional
Description: Quake 2 server browser
 Pulsebox fetches a list of Quake 2 servers, pings every server with ICMP echo,
 asks each one for its name, map, players and version, and shows one row per
 server, fastest first. It keeps favorites, shows a server's settings and
 players, and starts the game connected to the chosen server.
 .
 pulsebox-query runs the same probes from the command line, for scripts and
 server admins, and pulsebox-demonet runs a demo network on loopback.
 .
 The post-install step gives /usr/bin/pulsebox and /usr/bin/pulsebox-query the
 cap_net_raw file capability, as Debian's ping package does, so that ordinary
 users can ping.
CONTROL
(cd "$root" && find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum) > "$root/DEBIAN/md5sums"
chmod 0644 "$root/DEBIAN/md5sums"
find "$root" -type d -exec chmod 0755 {} +
find "$root" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group -Zxz --build "$root" "$deb" >&2
echo "$deb"
