# Shared by scripts/test and scripts/demo: packages, the Wine prefix, configure and build.
# Sourced, not run.

ROOT=$(CDPATH= cd -- "$(dirname -- "$0")/.." && pwd)
# Sourced from an interactive shell, $0 says nothing: take the current checkout.
[ -f "$ROOT/scripts/lib/common.sh" ] || ROOT=$(git rev-parse --show-toplevel 2>/dev/null || pwd)
BUILD="$ROOT/build/mingw"
export WINEPREFIX="${WINEPREFIX:-$ROOT/build/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
export WINEARCH=win64
# Debian keeps wineserver out of PATH.
case ":$PATH:" in *:/usr/lib/wine:*) ;; *) PATH="$PATH:/usr/lib/wine"; export PATH ;; esac

log() { printf '== %s\n' "$*"; }

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; elif command -v sudo >/dev/null 2>&1; then sudo "$@"; else
    echo "need root to run: $*" >&2; return 1; fi
}

# Debian packages this project needs, by a command or file that shows each is there.
ensure_packages() {
  missing=""
  need() { if ! { command -v "$1" >/dev/null 2>&1 || [ -e "$1" ]; }; then missing="$missing $2"; fi; }
  need cmake cmake
  need ninja ninja-build
  need x86_64-w64-mingw32-g++-posix g++-mingw-w64-x86-64-posix
  need x86_64-w64-mingw32-windres binutils-mingw-w64-x86-64
  need /usr/share/mingw-w64/include/windows.h mingw-w64-x86-64-dev
  need wine wine
  need /usr/lib/wine/wine64 wine64
  need xvfb-run xvfb
  need xauth xauth
  need /usr/src/googletest/CMakeLists.txt googletest
  need /usr/include/nlohmann/json.hpp nlohmann-json3-dev
  need /usr/share/fonts/truetype/wqy/wqy-microhei.ttc fonts-wqy-microhei
  if [ -n "$missing" ]; then
    log "installing:$missing"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    # shellcheck disable=SC2086
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
  fi
}

# The project's own Wine prefix, made once under build/.
ensure_wine_prefix() {
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    log "creating the Wine prefix in $WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    wineboot -i >"$ROOT/build/wineboot.log" 2>&1 </dev/null || true
    # Unmanaged X windows close at once; managed ones make every closed window cost seconds.
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >>"$ROOT/build/wineboot.log" 2>&1 </dev/null || true
    # As on Windows, Segoe UI draws Chinese through a linked font; without it every glyph is a box.
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' /v 'Segoe UI' /t REG_MULTI_SZ \
      /d 'wqy-microhei.ttc,WenQuanYi Micro Hei' /f >>"$ROOT/build/wineboot.log" 2>&1 </dev/null || true
    wineserver -w
  fi
}

configure_and_build() {
  log "configuring and building"
  cmake --preset mingw >"$ROOT/build/configure.log" 2>&1 || { cat "$ROOT/build/configure.log"; return 1; }
  cmake --build --preset mingw
}

# Runs a command with a display: the caller's, or a virtual one from Xvfb.
with_display() {
  if [ -n "${DISPLAY:-}" ]; then "$@"; else
    xvfb-run -a -s "-screen 0 1920x1080x24" "$@"; fi
}
