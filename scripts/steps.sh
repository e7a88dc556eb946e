# What the commands of ./run are made of.
# shellcheck shell=sh

step() { echo "== $*"; }

refuse() {
  echo "$1" >&2
  usage >&2
  exit 2
}

packages_for() { # PURPOSE
  case $1 in
    linux-programs) echo cmake ninja-build ccache g++ zlib1g-dev libcli11-dev libfmt-dev libstb-dev fonts-dejavu-core nlohmann-json3-dev libeigen3-dev ;;
    windows-programs) packages_for linux-programs && echo g++-mingw-w64-x86-64-posix libz-mingw-w64-dev ;;
    linux) packages_for linux-programs && echo googletest libgtk-3-dev ;;
    windows) packages_for linux && packages_for windows-programs && echo llvm ;;
    isolation) echo iproute2 ;;
    display) echo xvfb ;;
    browser) echo chromium chromium-driver python3-selenium ;;
    readers) echo python3-numpy python3-open3d ;;
    decoders) echo python3-numpy python3-opencv ;;
    wine) echo wine64 ;;
    format) echo clang-format ;;
    lint) echo clang-tidy shellcheck ;;
  esac
}

is_installed() { [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

install_for() { # PURPOSE...
  missing=''
  for purpose; do
    for package in $(packages_for "$purpose"); do
      case "$missing " in *" $package "*) continue ;; esac
      is_installed "$package" || missing="$missing $package"
    done
  done
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" != 0 ]; then
    echo "packages are missing; as root: apt-get install --no-install-recommends$missing" >&2
    exit 1
  fi
  step "installing$missing"
  # shellcheck disable=SC2086
  quietly apt-get.log sh -c 'apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"' sh $missing
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

install_tree() { # PLATFORM
  step "installing into dist/$1"
  rm -rf "dist/$1"
  quietly "$1-install.log" cmake --install "build/$1" --strip
}

list_sources() { # those of the given folders
  find "$@" -name '*.c' -o -name '*.h' -o -name '*.cpp' -o -name '*.hpp'
}
