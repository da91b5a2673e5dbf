#!/usr/bin/env bash
# Installs the Debian packages the editor, its development host and its
# tests need, and the further packages named as arguments (the build
# scripts' own tools); does nothing when they are all present.
set -euo pipefail

# qttranslations5-l10n: Qt's own texts (standard buttons) in the user's language.
packages=(cmake g++ make qtbase5-dev qtbase5-dev-tools qttranslations5-l10n fonts-dejavu-core "$@")

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
