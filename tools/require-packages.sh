#!/bin/sh
# usage: require-packages.sh PACKAGE...
# Installs those of the given Debian packages that are missing: as root, or by sudo.
set -eu

missing=
for package in "$@"; do
  state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) || state=
  [ "$state" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
  as_root=
elif command -v sudo >/dev/null 2>&1; then
  as_root='sudo -E'
else
  echo "These packages are missing, and this is neither root nor is there sudo:$missing" >&2
  echo "Have them installed first:  apt-get install$missing" >&2
  exit 1
fi

echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# The lists may be missing or old: they are fetched only when something is to be installed.
if ! { $as_root apt-get -qq update &&
       $as_root apt-get -qq install --no-install-recommends -y $missing >/dev/null; }; then
  echo "could not install:$missing" >&2
  echo "Have them installed first:  apt-get install$missing" >&2
  exit 1
fi
