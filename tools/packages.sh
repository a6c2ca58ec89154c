# Sourced by ./run and ./test: installs the Debian packages that are missing.

# What building needs; what only some tasks need is asked for by them.
BUILD_PACKAGES="g++ cmake ninja-build ccache libsqlite3-dev libzip-dev zlib1g-dev libpcre2-dev libgit2-dev qt6-base-dev"
GUI_PACKAGES="qt6-svg-dev libqt6svg6 qt6-webengine-dev libmd4c-dev libmd4c-html0-dev breeze-icon-theme fonts-dejavu-core"
DISPLAY_PACKAGES="xvfb xauth"
BENCH_PACKAGES="libbenchmark-dev zip unzip ripgrep"
FUZZ_PACKAGES="clang libclang-rt-14-dev"
# Validators of what the desktop is told of the program, and the making of its package.
DESKTOP_PACKAGES="desktop-file-utils appstream libxml2-utils shared-mime-info libglib2.0-bin man-db groff-base mandoc"
# Other programs that the tests hold archives, volumes and printed pages against.
TEST_PACKAGES="python3 7zip lld poppler-utils"
PACKAGE_PACKAGES="dpkg-dev"
ASAN_PACKAGES="libasan8 libubsan1"

need_packages() {
  local missing=() package
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" = 'install ok installed' ] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install these packages: ${missing[*]}" >&2; exit 1; }
    sudo=(sudo)
  fi
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
