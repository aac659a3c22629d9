#!/bin/bash
# lab.sh DIR COMMAND...: a LAVA lab on this machine: PostgreSQL, server, worker and three simulated
# boards. Runs COMMAND and shuts the lab down when it ends. Needs root, but not systemd.
#
# COMMAND is given LAVA_URL, LAVA_TOKEN and CVN_LAB, which is DIR. All files are below DIR;
# processes, mounts and network (loopback only) are in namespaces that end with this script. LAVA
# itself is Debian's, unpacked once in build/lava and not installed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
board_tools=$source/sim/board
build=${CVN_BUILD:-$source/build/release}
lava=$source/build/lava
boards=3
user=postgres
(($# >= 2)) || {
  echo 'usage: lab.sh DIR COMMAND...' >&2
  exit 2
}

# Unpack: unpacks Debian's packages. libguestfs is large and needed only for disk images.
Unpack() {
  local downloads package
  [[ ! -e $lava/usr/bin/lava-run ]] || return 0
  downloads=$(mktemp -d)
  (cd "$downloads" && apt-get -qq -o APT::Sandbox::User=root download lava-server lava-common lava-dispatcher lava-dispatcher-host)
  rm -rf "$lava"
  mkdir -p "$lava"
  for package in "$downloads"/*.deb; do dpkg-deb -x "$package" "$lava"; done
  rm -rf "$downloads"
  echo '# Stands in for libguestfs.' >"$lava/usr/lib/python3/dist-packages/guestfs.py"
}

if [[ ${CVN_LAB_INSIDE-} != yes ]]; then
  Unpack
  mkdir -p /etc/lava-server /var/lib/lava/dispatcher # fixed paths in LAVA; DIR is mounted there
  export CVN_LAB_INSIDE=yes
  exec unshare --mount --net --pid --fork --kill-child --mount-proc --propagation private -- "$0" "$@"
fi
mkdir -p "$1"
lab=$(cd "$1" && pwd)
shift
export PATH=$lava/usr/bin:$PATH PYTHONPATH=$lava/usr/lib/python3/dist-packages
postgres=(/usr/lib/postgresql/*/bin)

AsUser() {
  setpriv --reuid "$user" --regid "$user" --clear-groups -- "$@"
}

# Keep NAME COMMAND...: runs COMMAND in the background for as long as the lab exists.
Keep() {
  local name=$1
  shift
  "$@" >"$lab/log/$name.out" 2>&1 </dev/null &
}

# WaitFor COMMAND...: retries COMMAND until it succeeds, for at most half a minute.
WaitFor() {
  local _
  for _ in {1..300}; do
    "$@" >/dev/null 2>&1 && return
    sleep 0.1
  done
  echo "lab.sh: '$*' is not fulfilled after 30 s" >&2
  tail -n 20 "$lab"/log/*.out >&2
  exit 1
}

# The boards fetch LAVA's files for a job from their web server, whose directory is that of the
# build tree with one directory added.
MakeBoards() {
  local number part
  mkdir -p "$lab/dispatcher/tmp" "$lab"/build/{bin,lib}
  for part in bin lib; do mount --bind "$build/$part" "$lab/build/$part"; done
  cp -r "$build/media" "$lab/build"
  mkdir -p "$lab/build/media/www/tmp"
  mount --bind "$lab/dispatcher/tmp" "$lab/build/media/www/tmp"
  for ((number = 1; number <= boards; number++)); do
    cat >"$lab/console-$number" <<TEXT
#!/bin/bash
"$board_tools/board-power" "$lab/board-$number" on --bin "$lab/build"
exec "$board_tools/board-login" "$lab/board-$number" --banner
TEXT
    chmod +x "$lab/console-$number"
    cat >"$lab/devices/board-$number.jinja2" <<TEXT
{% extends 'cvn-simboard.jinja2' %}
{% set connection_command = '$lab/console-$number' %}
{% set power_off_command = '$board_tools/board-power $lab/board-$number off' %}
TEXT
  done
}

StartDatabase() {
  AsUser test -x "$lab" || {
    echo "lab.sh: $lab: the user $user, as which PostgreSQL runs, cannot access it" >&2
    exit 1
  }
  AsUser "${postgres[-1]}/initdb" -D "$lab/database" -A trust -E UTF8 --locale C.UTF-8 --no-sync \
    >"$lab/log/initdb.out"
  Keep postgres setpriv --reuid "$user" --regid "$user" --clear-groups \
    "${postgres[-1]}/postgres" -D "$lab/database" -k "$lab/sockets" -c listen_addresses= \
    -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c shared_buffers=32MB
  WaitFor "${postgres[-1]}/pg_isready" -q -h "$lab/sockets"
  AsUser "${postgres[-1]}/createdb" -h "$lab/sockets" lava
}

Settings() {
  base64 -w0 <<JSON
{"DATABASES": {"default": {"ENGINE": "django.db.backends.postgresql", "NAME": "lava",
   "USER": "$user", "PASSWORD": "", "HOST": "$lab/sockets", "PORT": "5432"}},
 "DJANGO_LOGFILE": "$lab/log/django.log", "MEDIA_ROOT": "$lab/media/",
 "DEVICES_PATH": "$lab/devices", "DISPATCHER_CONFIG_PATH": "$lab/etc/dispatcher.d",
 "HEALTH_CHECKS_PATH": "$lab/health-checks",
 "DEVICE_TYPES_PATHS": ["$here", "$lava/usr/share/lava-server/device-types"],
 "STATIC_ROOT": "$lab/static", "ALLOWED_HOSTS": ["127.0.0.1"], "INSTANCE_NAME": "cvn",
 "SECRET_KEY": "a lab of one run has no secrets", "CSRF_COOKIE_SECURE": false,
 "SESSION_COOKIE_SECURE": false, "EVENT_NOTIFICATION": true,
 "INTERNAL_EVENT_SOCKET": "ipc://$lab/media/events", "EVENT_SOCKET": "tcp://127.0.0.1:5500"}
JSON
}

FillDatabase() {
  AsUser lava-server manage migrate --noinput >"$lab/log/migrate.out" 2>&1 || {
    cat "$lab/log/migrate.out" >&2
    exit 1
  }
  AsUser lava-server manage shell >"$lab/log/fill.out" 2>&1 <<PY
from django.contrib.auth.models import User
from linaro_django_xmlrpc.models import AuthToken
from lava_scheduler_app.models import Device, DeviceType, Tag, Worker
admin = User.objects.create_superuser('admin', 'admin@localhost', 'admin')
AuthToken.objects.create(user=admin, secret='labtoken', description='lab')
lab = Worker.objects.create(hostname='lab', token='workertoken', health=Worker.HEALTH_ACTIVE)
kind = DeviceType.objects.create(name='cvn-simboard', display=True)
for number in range($boards):
    name = 'board-%d' % (number + 1)
    device = Device.objects.create(hostname=name, device_type=kind, worker_host=lab,
                                   health=Device.HEALTH_GOOD, state=Device.STATE_IDLE)
    device.tags.add(Tag.objects.create(name=name))

PY
}

# shellcheck disable=SC2317  # called by WaitFor
WorkerIsOnline() {
  curl -sf -H "Authorization: Token $LAVA_TOKEN" "$LAVA_URL/api/v0.2/workers/lab/" |
    grep -q '"state":"Online"'
}

StartServer() {
  export LAVA_URL=http://127.0.0.1:8000 LAVA_TOKEN=labtoken
  Keep server gunicorn3 lava_server.wsgi --log-level INFO --log-file "$lab/log/gunicorn.log" \
    -u "$user" -g "$user" --worker-class eventlet --workers 1 --bind 127.0.0.1:8000
  Keep publisher lava-server manage lava-publisher -u "$user" -g "$user" \
    --log-file "$lab/log/publisher.log" --host 127.0.0.1 --port 8001
  Keep scheduler lava-server manage lava-scheduler -u "$user" -g "$user" \
    --log-file "$lab/log/scheduler.log" --event-url tcp://127.0.0.1:5500
  WaitFor curl -sf "$LAVA_URL/api/v0.2/system/version/"
  Keep worker lava-worker --name lab --url "$LAVA_URL/" --token workertoken \
    --worker-dir "$lab/worker" --ping-interval 2 --job-log-interval 1 \
    --log-file "$lab/log/worker.log"
  WaitFor WorkerIsOnline
  WaitFor grep -q 'Check queue' "$lab/log/scheduler.log"
}

ip link set lo up
mkdir -p "$lab"/{log,sockets,database,media/job-output,devices,etc/dispatcher.d,health-checks,static,worker,dispatcher/tmp}
echo 'dispatcher_ip: 192.0.2.1' >"$lab/etc/dispatcher.d/lab.yaml"
mount --bind "$lab/etc" /etc/lava-server
mount --bind "$lab/dispatcher" /var/lib/lava/dispatcher
MakeBoards
chown -R "$user": "$lab"/{sockets,database,media,devices,etc,health-checks,log}
StartDatabase
LAVA_JSON_SETTINGS=$(Settings)
export LAVA_JSON_SETTINGS CVN_LAB=$lab
FillDatabase
StartServer
status=0
"$@" || status=$?
exit "$status" # the first process of its namespace: its end ends all others
