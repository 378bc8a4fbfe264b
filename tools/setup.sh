#!/usr/bin/env bash
# Installs what building and testing need and is not there yet: Debian 12, as root or with sudo. Quick when all is there.
# More packages may be named as arguments.
set -euo pipefail
packages=(
  # build
  g++ cmake ninja-build pkg-config ccache mold gettext
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgdal-dev libxml2-dev libpng-dev libboost-dev libsqlite3-dev
  libglib2.0-dev libsmbclient-dev libsecret-1-dev libssl-dev libpq-dev unixodbc-dev libflatbuffers-dev flatbuffers-compiler flatbuffers-compiler-dev
  # test
  libgtest-dev libgmock-dev fonts-liberation fontconfig samba xvfb dbus-daemon at-spi2-core gnome-keyring glib-networking gsettings-desktop-schemas clang-format
  cgi-mapserver lighttpd lighttpd-mod-webdav nginx openssl
  postgresql-15 postgresql-15-postgis-3 postgis mariadb-server-core odbc-mariadb libsqliteodbc
  "$@"
)
missing=()
installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
for package in "${packages[@]}"; do
  grep -q "^$package installed$" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Neither root nor sudo: please install ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
# Tests start the servers that they need: none of them is to run as one of the system's.
policy=/usr/sbin/policy-rc.d
if [ ! -e "$policy" ]; then
  trap '"${as_root[@]}" rm -f "$policy"' EXIT
  printf '#!/bin/sh\nexit 101\n' | "${as_root[@]}" tee "$policy" >/dev/null
  "${as_root[@]}" chmod 755 "$policy"
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
