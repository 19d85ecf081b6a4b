#!/usr/bin/env bash
# Makes, with openssl, the credentials for a Vexar deployment locked down
# with DDS Security: one certificate authority for identities and one for
# permissions, an identity per name given (application, operator or
# observer), the governance document and each identity's permissions
# document, both signed (S/MIME) by the permissions authority, and for each
# identity a Cyclone configuration fragment that loads them.
#
#   make-credentials.sh [options] DIR [ROLE:NAME ...]
#     --protection sign|encrypt  how log, State and command traffic is
#                                protected (default encrypt)
#     --domains MIN-MAX          the domain ids the documents cover (default 0-230, the most
#                                Cyclone's documents accept)
#     --days N                   validity of certificates and permissions (default 3650)
#   Without ROLE:NAME: application:application operator:operator observer:observer.
#   An existing DIR/ca is reused, so the same command issues more identities,
#   or renews the certificate of NAME (same subject, new key), under the same
#   authorities; delete DIR/NAME first to renew one.
#
# Use an identity: CYCLONEDDS_URI="<your configuration>,file://DIR/NAME/cyclonedds.xml"
set -euo pipefail

protection=encrypt
domains=0-230
days=3650
while [[ $# -gt 0 && $1 == --* ]]; do
  case $1 in
    --protection) protection=$2; shift 2 ;;
    --domains) domains=$2; shift 2 ;;
    --days) days=$2; shift 2 ;;
    *) echo "unknown option $1" >&2; exit 64 ;;
  esac
done
dir=${1:?usage: $0 [--protection sign|encrypt] [--domains MIN-MAX] [--days N] DIR [ROLE:NAME ...]}
shift
identities=("$@")
((${#identities[@]})) || identities=(application:application operator:operator observer:observer)
case $protection in
  sign) data_kind=NONE ;;   # the submessage's MAC covers the payload
  encrypt) data_kind=ENCRYPT ;;
  *) echo "--protection is sign or encrypt, not $protection" >&2; exit 64 ;;
esac
[[ $domains =~ ^([0-9]+)-([0-9]+)$ ]] || { echo "--domains is MIN-MAX, not $domains" >&2; exit 64; }
domain_min=${BASH_REMATCH[1]}
domain_max=${BASH_REMATCH[2]}
command -v openssl >/dev/null || { echo "openssl is missing" >&2; exit 69; }

here=$(cd "$(dirname "$0")" && pwd)
source "$here/plugins.sh"
plugins=$(security_plugin_dir) || { echo "Cyclone's DDS Security plugins are missing" >&2; exit 69; }

mkdir -p "$dir/ca"
dir=$(cd "$dir" && pwd)
ca=$dir/ca
umask 077

# make_authority NAME SUBJECT: a self-signed authority, unless it exists.
make_authority() {
  [[ -f $ca/$1.pem ]] && return 0
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$ca/$1_key.pem" -out "$ca/$1.pem" -days "$days" \
    -subj "$2" 2>/dev/null
}
make_authority identity_ca "/O=Vexar/CN=Vexar Identity CA"
make_authority permissions_ca "/O=Vexar/CN=Vexar Permissions CA"

sign_document() { # xml, p7s
  openssl smime -sign -in "$1" -text -out "$2" -signer "$ca/permissions_ca.pem" -inkey "$ca/permissions_ca_key.pem"
}

# A day back, so that a clock a little behind still accepts the documents.
now=$(date -u -d "-1 day" +%Y-%m-%dT%H:%M:%S)
until=$(date -u -d "+$days days" +%Y-%m-%dT%H:%M:%S)
domains_xml="<domains><id_range><min>$domain_min</min><max>$domain_max</max></id_range></domains>"

# topic_rule EXPRESSION ACCESS-CONTROLLED DATA-KIND
topic_rule() {
  cat <<EOF
        <topic_rule>
          <topic_expression>$1</topic_expression>
          <enable_discovery_protection>$2</enable_discovery_protection>
          <enable_liveliness_protection>false</enable_liveliness_protection>
          <enable_read_access_control>$2</enable_read_access_control>
          <enable_write_access_control>$2</enable_write_access_control>
          <metadata_protection_kind>$([[ $2 == true ]] && echo SIGN || echo NONE)</metadata_protection_kind>
          <data_protection_kind>$3</data_protection_kind>
        </topic_rule>
EOF
}

# Every participant of the domains must hold the same governance. The
# logger's topics are all "qtv/vexar" or under it; any other topic (an
# application's own, on the participant it shares with its logger) is left
# as without security, for the application's own governance to decide.
{
  cat <<EOF
<?xml version="1.0" encoding="utf-8"?>
<dds>
  <domain_access_rules>
    <domain_rule>
      $domains_xml
      <allow_unauthenticated_participants>false</allow_unauthenticated_participants>
      <enable_join_access_control>true</enable_join_access_control>
      <discovery_protection_kind>$([[ $protection == encrypt ]] && echo ENCRYPT || echo SIGN)</discovery_protection_kind>
      <liveliness_protection_kind>SIGN</liveliness_protection_kind>
      <rtps_protection_kind>NONE</rtps_protection_kind>
      <topic_access_rules>
EOF
  topic_rule "qtv/vexar" true "$data_kind"
  topic_rule "qtv/vexar/*" true "$data_kind"
  topic_rule "*" false NONE
  cat <<EOF
      </topic_access_rules>
    </domain_rule>
  </domain_access_rules>
</dds>
EOF
} >"$dir/governance.xml"
sign_document "$dir/governance.xml" "$dir/governance.p7s"

topics_xml() { # topic...
  local topic
  echo "<topics>"
  for topic in "$@"; do echo "            <topic>$topic</topic>"; done
  echo "          </topics>"
}
logs=qtv/vexar
state=qtv/vexar/administration/state
statistics=qtv/vexar/administration/statistics
requests=qtv/vexar/administration/command_request
responses=qtv/vexar/administration/command_response

# allow_rule ROLE: what the role may publish and subscribe.
allow_rule() {
  local publish=() subscribe=()
  case $1 in
    application) publish=("$logs" "$state" "$statistics" "$responses") subscribe=("$requests") ;;
    operator) publish=("$requests") subscribe=("$logs" "$state" "$statistics" "$responses") ;;
    observer) subscribe=("$logs" "$state" "$statistics") ;;
  esac
  echo "      <allow_rule>"
  echo "        $domains_xml"
  ((${#publish[@]})) && echo "        <publish>$(topics_xml "${publish[@]}")</publish>"
  ((${#subscribe[@]})) && echo "        <subscribe>$(topics_xml "${subscribe[@]}")</subscribe>"
  echo "      </allow_rule>"
}

# make_identity ROLE NAME
make_identity() {
  local role=$1 name=$2 out=$dir/$2
  mkdir -p "$out"
  if [[ ! -f $out/cert.pem ]]; then
    openssl req -new -newkey rsa:2048 -nodes -keyout "$out/key.pem" -out "$out/request.csr" \
      -subj "/O=Vexar/OU=$role/CN=$name" 2>/dev/null
    openssl x509 -req -in "$out/request.csr" -CA "$ca/identity_ca.pem" -CAkey "$ca/identity_ca_key.pem" \
      -CAcreateserial -days "$days" -out "$out/cert.pem" 2>/dev/null
    rm -f "$out/request.csr"
  fi
  local subject
  subject=$(openssl x509 -noout -subject -nameopt RFC2253 -in "$out/cert.pem" | sed 's/^subject=//')
  {
    cat <<EOF
<?xml version="1.0" encoding="utf-8"?>
<dds>
  <permissions>
    <grant name="$name">
      <subject_name>$subject</subject_name>
      <validity><not_before>$now</not_before><not_after>$until</not_after></validity>
EOF
    allow_rule "$role"
    cat <<EOF
      <default>DENY</default>
    </grant>
  </permissions>
</dds>
EOF
  } >"$out/permissions.xml"
  sign_document "$out/permissions.xml" "$out/permissions.p7s"
  cat >"$out/cyclonedds.xml" <<EOF
<?xml version="1.0" encoding="UTF-8"?>
<!-- $role "$name": add after the rest of the configuration in CYCLONEDDS_URI. -->
<CycloneDDS xmlns="https://cdds.io/config">
  <Domain Id="any">
    <Security>
      <Authentication>
        <Library path="$plugins/libdds_security_auth.so" initFunction="init_authentication" finalizeFunction="finalize_authentication"/>
        <IdentityCA>file:$ca/identity_ca.pem</IdentityCA>
        <IdentityCertificate>file:$out/cert.pem</IdentityCertificate>
        <PrivateKey>file:$out/key.pem</PrivateKey>
      </Authentication>
      <AccessControl>
        <Library path="$plugins/libdds_security_ac.so" initFunction="init_access_control" finalizeFunction="finalize_access_control"/>
        <PermissionsCA>file:$ca/permissions_ca.pem</PermissionsCA>
        <Governance>file:$dir/governance.p7s</Governance>
        <Permissions>file:$out/permissions.p7s</Permissions>
      </AccessControl>
      <Cryptographic>
        <Library path="$plugins/libdds_security_crypto.so" initFunction="init_crypto" finalizeFunction="finalize_crypto"/>
      </Cryptographic>
    </Security>
  </Domain>
</CycloneDDS>
EOF
  echo "$role $name: $out/cyclonedds.xml"
}

for identity in "${identities[@]}"; do
  role=${identity%%:*}
  name=${identity#*:}
  case $role in
    application | operator | observer) ;;
    *) echo "a role is application, operator or observer, not $role" >&2; exit 64 ;;
  esac
  [[ $name =~ ^[A-Za-z0-9._-]+$ ]] || { echo "a name is letters, digits, '.', '_' or '-', not '$name'" >&2; exit 64; }
  make_identity "$role" "$name"
done
