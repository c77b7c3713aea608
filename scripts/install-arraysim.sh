#!/usr/bin/env bash
# Installs the array simulator on this host for real, as root: the arraysim
# program with a link for each array tool, the state folders, and the login
# opsmaint whose profile finds the tools and the state. Running it again
# brings an installation up to date; nothing is done twice.
#
#   scripts/install-arraysim.sh [--build-dir DIR] [--prefix DIR] [--state-root DIR] [--dry-run]
#
#   --build-dir DIR   the build holding bin/arraysim (default: build beside this script)
#   --prefix DIR      where the program goes (default: /opt/arraysim; tools in DIR/bin)
#   --state-root DIR  SMIS_ROOT for the opsmaint login (default: none, the real folders)
#   --dry-run         print what would be done, change nothing (needs no root)
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_dir=$top/build
prefix=/opt/arraysim
state_root=
dry_run=false
login=opsmaint
tools=(Vexview Vexcfg Vexsc_create Vexsc_delete Vexsc_restore Vexsc_query
       Vexrc_pair Vexrc_replicate Vexrc_separate Vexrc_restore Vexrc_change Vexrc_rvmode
       Vexrc_query outfmtset)
begin_mark="# >>> arraysim (written by install-arraysim.sh) >>>"
end_mark="# <<< arraysim <<<"

die() { echo "install-arraysim: $*" >&2; exit 1; }
say() { echo "install-arraysim: $*"; }

usage() {
  sed -n '7,12p' "${BASH_SOURCE[0]}" | sed 's/^# \{0,3\}//' >&2
  exit 2
}

# Paths end up in a login profile: plain absolute paths only.
check_path() {  # check_path OPTION VALUE
  case "$2" in
    /*) ;;
    *) die "$1 needs an absolute path, got '$2'" ;;
  esac
  case "$2" in
    *[!A-Za-z0-9/._+-]*) die "$1 may hold only letters, digits and / . _ + -, got '$2'" ;;
  esac
}

run() {  # runs a command, or only shows it in a dry run
  if $dry_run; then
    echo "+ $*"
  else
    "$@"
  fi
}

while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) [ $# -ge 2 ] || die "--build-dir needs a folder"; build_dir=$2; shift 2 ;;
    --prefix) [ $# -ge 2 ] || die "--prefix needs a folder"; prefix=$2; shift 2 ;;
    --state-root) [ $# -ge 2 ] || die "--state-root needs a folder"; state_root=$2; shift 2 ;;
    --dry-run) dry_run=true; shift ;;
    -h|--help) usage ;;
    *) die "unknown argument '$1' (see --help)" ;;
  esac
done

check_path --prefix "$prefix"
[ "$prefix" != / ] || die "--prefix / would scatter the program over the root folder"
[ -z "$state_root" ] || check_path --state-root "$state_root"
program=$build_dir/bin/arraysim
[ -f "$program" ] && [ -x "$program" ] || die "no built arraysim at $program (build first, or give --build-dir)"
if ! $dry_run && [ "$(id -u)" -ne 0 ]; then
  die "run this as root (or with --dry-run to see what it would do)"
fi

# 1. The program and its tool links
say "installing $program into $prefix/bin"
run install -d -m 0755 "$prefix/bin"
run install -m 0755 "$program" "$prefix/bin/arraysim"
for tool in "${tools[@]}"; do
  run ln -sfn arraysim "$prefix/bin/$tool"
done

# 2. The login that runs the tools
if id -u "$login" >/dev/null 2>&1; then
  say "the login $login exists already"
else
  say "creating the login $login"
  shell=/bin/sh
  [ -x /bin/bash ] && shell=/bin/bash
  run useradd --create-home --shell "$shell" --comment "array operations" "$login"
fi

# 3. The state folders, writable by the login (the tools and the daemon keep
#    their state there)
for dir in /var/lib/arraysim /opt/HubMonitor /var/run; do
  run install -d -m 0755 "$state_root$dir"
done
run chown "$login:" "$state_root/var/lib/arraysim" "$state_root/opt/HubMonitor"

# 4. The login's profile: the tools on PATH, and the state root if there is one
block="$begin_mark
export PATH=\"$prefix/bin:\$PATH\""
[ -z "$state_root" ] || block="$block
export SMIS_ROOT=\"$state_root\""
block="$block
$end_mark"

write_profile() {  # write_profile FILE: replaces the block of an earlier run, keeps the rest
  local file=$1 temp
  if $dry_run; then
    echo "+ write into $file:"
    printf '%s\n' "$block" | sed 's/^/    /'
    return
  fi
  temp=$(mktemp "$file.XXXXXX")
  if [ -f "$file" ]; then
    awk -v b="$begin_mark" -v e="$end_mark" '$0 == b {skip = 1} !skip {print} $0 == e {skip = 0}' "$file" >"$temp"
  fi
  printf '%s\n' "$block" >>"$temp"
  chown "$login:" "$temp"
  chmod 0644 "$temp"
  mv "$temp" "$file"
}

if $dry_run && ! id -u "$login" >/dev/null 2>&1; then
  home=/home/$login
else
  home=$(getent passwd "$login" | cut -d: -f6)
fi
[ -n "$home" ] || die "cannot find the home folder of $login"
# A login shell reads the first of these that exists; the block goes into each
# one present, and into .profile in any case.
write_profile "$home/.profile"
for file in "$home/.bash_profile" "$home/.bash_login"; do
  [ -f "$file" ] && write_profile "$file"
done

if $dry_run; then
  say "dry run: nothing was changed"
else
  say "done; the tools answer for $login: su - $login -c 'Vexview -all'"
  say "a new array state: su - $login -c 'arraysim init --template small'"
fi
