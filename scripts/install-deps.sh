#!/bin/sh
# Installs every Debian package that the build, the tests and the demo need.
# Runs as root (CI) or through sudo; does nothing when all are present.
set -e
PACKAGES="build-essential cmake pkg-config git ca-certificates procps
  libxml2-dev libsqlite3-dev sqlite3 libssl-dev openssl libcrypt-dev
  libcpp-httplib-dev zlib1g-dev libbrotli-dev nlohmann-json3-dev libcli11-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  sblim-wbemcli curl python3"

missing=""
for p in $PACKAGES; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed"; then
    missing="$missing $p"
  fi
done
[ -z "$missing" ] && exit 0

SUDO=""
if [ "$(id -u)" != "0" ]; then SUDO="sudo"; fi
echo "installing:$missing"
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get update -qq
# shellcheck disable=SC2086
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
