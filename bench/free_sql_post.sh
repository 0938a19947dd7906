#!/usr/bin/env bash
# Free SQL end to end on a large shop: the document written by `entprcreq query`, the same request
# posted through `entprcreq process` to the stand-in head office, and `sqlite3 -csv` of the same
# query, each with its time and peak memory. Figures, not a test.
#
#   bench/free_sql_post.sh [SHOP.db] [SQL]
#
# SHOP.db defaults to /tmp/large.db (created with `entprcreq sample-db --size large --out /tmp/large.db`
# when missing, about 15 s); SQL to "select * from woparts". Needs build/entprcreq, sqlite3 and
# /usr/bin/time (package time).
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
bin="${ENTPRCREQ:-$here/build/entprcreq}"
db="${1:-/tmp/large.db}"
sql="${2:-select * from woparts}"
work="$(mktemp -d)"
office_pid=""
cleanup() {
  if [ -n "$office_pid" ]; then kill "$office_pid" 2>/dev/null || true; wait "$office_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

[ -f "$db" ] || "$bin" sample-db --size large --out "$db" >/dev/null

# One command's wall seconds, peak resident kilobytes and CPU seconds: "<seconds> <kB> <cpu>". On a
# shared machine the CPU seconds are the steadier figure.
measure() {
  /usr/bin/time -f '%e %M %U %S' -o "$work/time" "$@" >"$work/out" 2>/dev/null || true
  awk '{ print $1, $2, $3 + $4 }' "$work/time"
}
row() {  # label seconds kB bytes cpu
  local mbps
  mbps=$(awk -v b="$4" -v s="$2" 'BEGIN { printf "%.0f", (s > 0 ? b / s / 1e6 : 0) }')
  printf '%-28s %7s s %7s s CPU %10s bytes %5s MB/s %6.0f MB peak\n' "$1" "$2" "$5" "$4" "$mbps" \
    "$(awk -v k="$3" 'BEGIN { print k / 1024 }')"
}

# Warm the page cache so the first run is not the only one reading the disk.
cat "$db" >/dev/null

read -r s kb cpu < <(measure sqlite3 -csv "$db" "$sql")
csv_bytes=$(stat -c %s "$work/out"); csv_s=$s; csv_cpu=$cpu
row "sqlite3 -csv" "$s" "$kb" "$csv_bytes" "$cpu"

read -r s kb cpu < <(measure "$bin" query --connection "Provider=SQLite;Data Source=$db" --sql "$sql" \
  --max-result-mb 4096)
doc_bytes=$(stat -c %s "$work/out"); query_s=$s; query_cpu=$cpu
cp "$work/out" "$work/printed.xml"
row "entprcreq query" "$s" "$kb" "$doc_bytes" "$cpu"

# The post: a stand-in head office storing what it receives, and one custom request.
port=$((20000 + RANDOM % 20000))
/usr/bin/time -f '%e %M %U %S' -o "$work/office.time" "$bin" headoffice --listen "127.0.0.1:$port" --out "$work/posts" \
  >/dev/null 2>&1 &
office_pid=$!
for _ in $(seq 50); do curl -s -o /dev/null "http://127.0.0.1:$port/EntHost/service.asmx?WSDL" && break; sleep 0.1; done
escaped_sql=$(printf '%s' "$sql" | sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g')
printf '<report><type>2</type><clientid>1</clientid><sql>%s</sql><name/><params><reportItem/></params><sessionid>bench</sessionid></report>' \
  "$escaped_sql" >"$work/request.xml"
read -r s kb cpu < <(measure "$bin" process --request "$work/request.xml" --connection "Provider=SQLite;Data Source=$db" \
  --host-address 127.0.0.1 --host-port "$port" --db-size --token-dir "$work/token" --timeout 600 --max-result-mb 4096)
process_s=$s; process_cpu=$cpu
row "entprcreq process (posted)" "$s" "$kb" "$doc_bytes" "$cpu"
kill -INT $(pgrep -P "$office_pid") 2>/dev/null || true  # the server under time(1)
wait "$office_pid" 2>/dev/null || true
office_pid=""
read -r s kb user sys <"$work/office.time"
printf '%-28s %8s s CPU %7.0f MB peak (whole run)\n' "stand-in head office" \
  "$(awk -v u="$user" -v y="$sys" 'BEGIN { print u + y }')" "$(awk -v k="$kb" 'BEGIN { print k / 1024 }')"

if cmp -s "$work/printed.xml" "$work/posts/0001.xml"; then same=yes; else same=NO; fi
awk -v q="$query_s" -v p="$process_s" -v c="$csv_s" -v qc="$query_cpu" -v pc="$process_cpu" -v cc="$csv_cpu" \
  -v same="$same" 'BEGIN {
  printf "vs sqlite3 -csv, wall (CPU): query %.2fx (%.2fx), process %.2fx (%.2fx); stored post == printed: %s\n",
         (c > 0 ? q / c : 0), (cc > 0 ? qc / cc : 0), (c > 0 ? p / c : 0), (cc > 0 ? pc / cc : 0), same }'
