#!/usr/bin/env bash
# Unpacks both packages and starts the program from each, without a display, as a user who cannot write where it lies.
# usage: test-package.sh [--clean-root] FOLDER
#   --clean-root  also install the Debian package in a fresh minimal Debian 12 (takes debootstrap, root and a mirror;
#                 skipped without them) and start it there
#   FOLDER        holds orvex_*.deb and orvex-*.tar.gz, as cpack makes them
set -euo pipefail
clean_root=no
[ "$1" != --clean-root ] || { clean_root=yes; shift; }
deb=$(echo "$1"/orvex_*.deb)
archive=$(echo "$1"/orvex-*.tar.gz)
work=$(mktemp -d)
chmod 755 "$work"
trap 'rm -rf --one-file-system "$work"' EXIT

# A program started in that folder makes its user's folder, an empty database and a log, and waits for the user's choice.
# The command before the program's path may enter a root.
start() {
    local name=$1 home=$2 seen=$3
    shift 3
    timeout 60 "$@" > "$work/output.txt" 2>&1 &
    local program=$!
    for _ in $(seq 300); do
        if grep -q "before DBOpen" "$seen"/.local/share/Orvex/Log/Log*.txt 2> /dev/null && [ -e "$seen/.local/share/Orvex/Harbinet.mdb" ]; then
            kill $program 2> /dev/null || true
            wait $program 2> /dev/null || true
            echo "$name: starts, its files lie in $home/.local/share/Orvex"
            return 0
        fi
        kill -0 $program 2> /dev/null || break
        sleep 0.1
    done
    kill $program 2> /dev/null || true
    echo "$name: did not start" >&2
    cat "$work/output.txt" >&2
    exit 1
}

as_user=()
owner=()
if [ "$(id -u)" -eq 0 ]; then
    as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
    owner=(-o 65534)
fi
unpacked() {
    local name=$1 folder=$2
    install -d "${owner[@]}" "$work/home-$name" "$work/run-$name"
    [ "$(id -u)" -eq 0 ] || chmod -R a-w "$folder"
    start "$name" "$work/home-$name" "$work/home-$name" "${as_user[@]}" env -i HOME="$work/home-$name" PATH="$PATH" \
        XDG_RUNTIME_DIR="$work/run-$name" QT_QPA_PLATFORM=offscreen "$folder/Orvex"
    chmod -R u+w "$folder"
}

mkdir "$work/deb" "$work/tgz"
dpkg-deb -x "$deb" "$work/deb"
unpacked deb "$work/deb/opt/orvex"
tar xzf "$archive" -C "$work/tgz"
unpacked archive "$(echo "$work"/tgz/orvex-*)"
for file in usr/share/applications/orvex.desktop usr/share/icons/hicolor/scalable/apps/orvex.svg opt/orvex/help/index.html; do
    [ -e "$work/deb/$file" ] || { echo "$deb lacks $file" >&2; exit 1; }
done

[ $clean_root = yes ] || exit 0
if [ "$(id -u)" -ne 0 ] || ! command -v debootstrap > /dev/null; then
    echo "clean root: skipped, it takes root and debootstrap"
    exit 0
fi
root=$work/root
if ! debootstrap --variant=minbase bookworm "$root" > "$work/debootstrap.txt" 2>&1; then
    tail -5 "$work/debootstrap.txt" >&2
    echo "clean root: skipped, no Debian 12 could be made"
    exit 0
fi
cp "$deb" "$root/orvex.deb"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mount -t proc proc "$root/proc"
trap 'umount "$root/proc"; rm -rf --one-file-system "$work"' EXIT
chroot "$root" apt-get update -q > /dev/null
chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends /orvex.deb > "$work/install.txt" 2>&1 \
    || { tail -20 "$work/install.txt" >&2; exit 1; }
chroot "$root" useradd -m installer
start "clean root" /home/installer "$root/home/installer" chroot "$root" setpriv --reuid=installer --regid=installer \
    --clear-groups env -i HOME=/home/installer PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen /opt/orvex/Orvex
chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get purge -qy orvex > /dev/null
[ ! -e "$root/opt/orvex" ] && [ -e "$root/home/installer/.local/share/Orvex/Harbinet.mdb" ]
echo "clean root: removed again, the user's files are still there"
