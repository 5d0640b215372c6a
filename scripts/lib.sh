# Shared by the scripts in this folder: where the tree is, what gets installed, how a preset is
# built. Source it; it changes to the repository's root folder.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root" || exit 1
cores=$(nproc 2>/dev/null || echo 2)

# A compiler cache makes repeated builds short; nothing depends on it.
if command -v ccache >/dev/null 2>&1; then
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}
fi

say() { printf '%s\n' "$*"; }
heading() { printf '\n== %s\n' "$*"; }
fail() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# Whether a package is there: a tool is looked for on PATH, so that one that was installed by hand
# counts; a library is asked of the package system, where there is one.
has_package() {
  local package=$1 tool=${2:-}
  if [[ -n $tool ]]; then
    command -v "$tool" >/dev/null 2>&1
  elif command -v dpkg-query >/dev/null 2>&1; then
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true) == installed ]]
  fi
}

# try_install PACKAGE[:TOOL]... installs the Debian packages that are missing. Returns non-zero
# when that is not possible here.
try_install() {
  local item tool missing=()
  for item in "$@"; do
    tool=
    [[ $item == *:* ]] && tool=${item#*:}
    has_package "${item%%:*}" "$tool" || missing+=("${item%%:*}")
  done
  ((${#missing[@]})) || return 0
  say "Installing: ${missing[*]}"
  local as_root=()
  if ((EUID != 0)); then as_root=(sudo); fi
  command -v apt-get >/dev/null 2>&1 || return 1
  if ((EUID != 0)) && ! command -v sudo >/dev/null 2>&1; then return 1; fi
  local log
  log=$(mktemp)
  if "${as_root[@]}" apt-get update >"$log" 2>&1 &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
    rm -f "$log"
  else
    tail -n 20 "$log" >&2
    rm -f "$log"
    return 1
  fi
}

# The same for what is needed in any case.
need() {
  try_install "$@" || fail "could not install all of: ${*%%:*} (install them by hand and run this again)"
}

need_build_tools() { need g++:g++ cmake:cmake ninja-build:ninja; }

# The build of the engine alone needs no test packages; a folder that is configured for tests
# already stays so.
build_runtime() {
  need_build_tools
  local options=()
  [[ -f build/release/CMakeCache.txt ]] || options+=(-DQD_TESTS=OFF)
  quietly cmake --preset release "${options[@]}"
  quietly cmake --build --preset release --target runtime -j "$cores"
}

# Runs a command and shows what it printed only when it failed.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  if ((status)); then cat "$log" >&2; fi
  rm -f "$log"
  return "$status"
}

# The C++ sources of the tree: the tracked ones, or every one where this is no git checkout.
cpp_sources() {
  git -c safe.directory="$root" ls-files -- '*.h' '*.cpp' 2>/dev/null ||
    find src tests fuzz bench examples -name '*.h' -o -name '*.cpp'
}
