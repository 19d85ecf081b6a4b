# Sourced: where Cyclone's DDS Security plugins are. Debian ships them in a
# folder of their own, off the loader's search path, so the configuration
# names them by full path.
security_plugin_dir() {
  local dir
  for dir in ${VEXAR_DDS_SECURITY_PLUGINS:-} /usr/lib/x86_64-linux-gnu/libddsc0debian \
    "/usr/lib/$(uname -m)-linux-gnu/libddsc0debian" /usr/lib/x86_64-linux-gnu /usr/local/lib; do
    if [[ -f $dir/libdds_security_auth.so && -f $dir/libdds_security_ac.so && -f $dir/libdds_security_crypto.so ]]; then
      echo "$dir"
      return 0
    fi
  done
  return 1
}
