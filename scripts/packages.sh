# The Debian packages that the project needs, in one place, and how the missing ones come in.
# Sourced by run and test; "a|b" means that either will do.

packages_build="
  g++ cmake ninja-build pkg-config librsvg2-bin
  libsdl2-dev libcairo2-dev libpango1.0-dev libjpeg62-turbo-dev
  libavformat-dev libavcodec-dev libavfilter-dev libswscale-dev libswresample-dev libavutil-dev
  libglib2.0-dev libgupnp-1.6-dev libsoup-3.0-dev libxml2-dev libcurl4-openssl-dev|libcurl4-gnutls-dev"

# Any script that a file name may be written in.
packages_fonts="fonts-dejavu-core fonts-noto-core fonts-noto-cjk fonts-noto-color-emoji"

packages_run="ffmpeg"

packages_test="libgtest-dev libgmock-dev python3 chromium playerctl dbus-bin dbus-daemon curl minidlna dvdauthor genisoimage xorriso nginx-light|nginx-core|nginx-full|nginx iproute2 util-linux"

packages_bench="libbenchmark-dev xvfb mpv xdotool"

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# install_missing PACKAGE...: installs what is not there, quietly, and nothing else.
install_missing() {
  local wanted choice found missing=""
  for wanted in "$@"; do
    found=""
    for choice in ${wanted//|/ }; do
      if is_installed "$choice"; then
        found=1
        break
      fi
    done
    [ -n "$found" ] || missing="$missing ${wanted%%|*}"
  done
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" != 0 ]; then
    echo "These packages are missing. As root, run:" >&2
    echo "  apt-get install --no-install-recommends$missing" >&2
    return 1
  fi
  echo "Installing$missing"
  local log rule=/usr/sbin/policy-rc.d rule_is_ours=""
  log=$(mktemp)
  # A server that only the tests use must not be started as a service of this machine.
  if [ ! -e $rule ]; then
    printf '#!/bin/sh\nexit 101\n' > $rule
    chmod 755 $rule
    rule_is_ours=1
  fi
  local status=0
  export DEBIAN_FRONTEND=noninteractive
  apt-get -qq update > "$log" 2>&1 || true    # without a network the lists at hand may do
  apt-get -qq -y --no-install-recommends --no-remove install $missing >> "$log" 2>&1 || status=$?
  [ -z "$rule_is_ours" ] || rm -f $rule
  if [ $status -ne 0 ]; then
    tail -n 40 "$log" >&2
    echo "Installing packages failed." >&2
  fi
  rm -f "$log"
  return $status
}
