# Sourced by the benchmark scripts: Cyclone's own ddsperf on loopback, as
# the anchor beside our figures in the same run.
# ddsperf_rate DOMAIN SECONDS PAYLOAD: samples per second that a ddsperf
# subscriber receives from a ddsperf publisher of PAYLOAD-byte samples (KS
# topic; the size excludes the 4-byte encapsulation header), the median of
# the full seconds (the first and the last are partial).
ddsperf_rate() {
  local domain=$1 seconds=$2 payload=$3 out sub
  out=$(mktemp)
  ddsperf -i "$domain" -D "$((seconds + 1))" sub >"$out" 2>&1 &
  sub=$!
  sleep 0.5
  ddsperf -i "$domain" -D "$seconds" pub size "$payload" >/dev/null 2>&1
  wait "$sub" || true
  awk '/ rate / { for (i = 1; i < NF; i++) if ($i == "rate") print $(i + 1) * 1000 }' "$out" |
    sed '1d;$d' | sort -n | awk '{ v[NR] = $1 } END { if (NR) print int(v[int((NR + 1) / 2)]); else print 0 }'
  rm -f "$out"
}
