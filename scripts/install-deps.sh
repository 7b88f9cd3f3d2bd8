#!/usr/bin/env bash
# Installs the Debian packages that building and testing need. Safe to run again:
# it only installs what is missing. Without root or apt it lists what is missing.
set -euo pipefail

packages=(
  g++ clang libclang-rt-dev cmake ninja-build pkg-config
  qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools libqt6sql6-sqlite
  qt6-translations-l10n
  qt6-multimedia-dev libqt6multimedia6 pulseaudio
  libudev-dev
  libgtest-dev libgmock-dev umockdev libumockdev-dev libbenchmark-dev
  sox python3 fonts-noto-cjk locales
  libxml2-utils libxml2-dev
  dpkg-dev file lintian appstream desktop-file-utils debootstrap
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

# A locale whose decimal point is a comma: the device's numbers must read the same in it.
ensure_comma_locale() {
  locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$' && return 0
  [ "$(id -u)" -eq 0 ] || { echo "Missing locale de_DE.UTF-8 (run this as root)." >&2; return 1; }
  localedef -i de_DE -f UTF-8 de_DE.UTF-8
}

if [ ${#missing[@]} -eq 0 ]; then
  ensure_comma_locale
  exit 0
fi

if [ "$(id -u)" -ne 0 ] || ! command -v apt-get >/dev/null; then
  echo "Missing packages: ${missing[*]}" >&2
  echo "Install them as root (apt-get install ${missing[*]}) and run this again." >&2
  exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
ensure_comma_locale
