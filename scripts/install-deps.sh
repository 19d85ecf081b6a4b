#!/usr/bin/env bash
# Installs from Debian whatever the build, the tests and the demo need and the
# machine lacks. Run as root on Debian 12; does nothing when all is present.
# libddsc0debian carries Cyclone's DDS Security plugins, openssl makes the
# test credentials, dumpcap (wireshark-common) captures the secured traffic.
set -euo pipefail
packages=(
  build-essential cmake ninja-build pkg-config git
  cyclonedds-dev cyclonedds-tools libexpat1-dev libsqlite3-dev sqlite3
  libgtest-dev libgmock-dev googletest libbenchmark-dev libspdlog-dev libfmt-dev
  clang clang-format libclang-rt-14-dev valgrind tmux iproute2 procps
  libddsc0debian openssl wireshark-common
  libcpp-httplib-dev nlohmann-json3-dev curl jq chromium chromium-driver
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
