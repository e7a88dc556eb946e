# What the commands of ./run are made of.
# shellcheck shell=sh

step() { echo "== $*"; }

refuse() {
  echo "$1" >&2
  usage >&2
  exit 2
}

# Keeps a command's output in build/LOG and shows it when the command fails.
quietly() { # LOG COMMAND...
  mkdir -p build
  log=build/$1
  shift
  "$@" >"$log" 2>&1 || {
    status=$?
    cat "$log" >&2
    exit "$status"
  }
}

# Starts a command that goes on beside the others, as $!, and is ended with them. timeout ends all that it has started, when it is ended.
# That there is nothing left to end must not become the status of all.
started=''
start() { # COMMAND...
  timeout 1h "$@" &
  started="$started $!"
  trap 'kill $started 2>/dev/null || true' EXIT
}

# Runs a command in a network of its own where that is permitted.
isolated() { # COMMAND...
  if scripts/isolated true 2>/dev/null; then scripts/isolated "$@"; else "$@"; fi
}

# Runs what was built for a platform, under Wine in a prefix that goes away with it.
run_built() { # PLATFORM PROGRAM ARGUMENT...
  program=build/$1/bin/$2 prefix=$PWD/build/wine-$2 status=0
  case $1 in windows) program="env WINEPREFIX=$prefix scripts/wine $program.exe" && scripts/wine --prepare ;; esac
  shift 2
  # shellcheck disable=SC2086
  isolated $program "$@" || status=$?
  scripts/wine --discard "$prefix"
  return $status
}

install_tree() { # PLATFORM
  step "installing into dist/$1"
  rm -rf "dist/$1"
  quietly "$1-install.log" env SOURCE_DATE_EPOCH=0 cmake --install "build/$1" --strip
}

# What is packed says that it was made when the sources were last changed, so that it is the same whenever it is packed.
use_source_date() {
  : "${SOURCE_DATE_EPOCH:=$(git log -1 --format=%ct 2>/dev/null || date -r CHANGELOG.md +%s)}"
  export SOURCE_DATE_EPOCH
}

project_version() { sed -n 's/^project(Fringix VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt; }

list_sources() { # those of the given folders
  find "$@" -name '*.c' -o -name '*.h' -o -name '*.cpp' -o -name '*.hpp'
}
