# Sourced by the scripts: the repository root and the loopback DDS configuration.
VEXAR_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export CYCLONEDDS_URI="file://$VEXAR_ROOT/etc/cyclonedds-loopback.xml"
VEXAR_JOBS=$(nproc)
vexar_configure() { # build-dir, extra cmake args...
  local dir=$1; shift
  cmake -S "$VEXAR_ROOT" -B "$VEXAR_ROOT/$dir" -G Ninja "$@" >/dev/null
}
vexar_build() { cmake --build "$VEXAR_ROOT/$1" -j"$VEXAR_JOBS"; }
