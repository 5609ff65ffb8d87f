# Sourced by the other scripts: makes sure the Debian packages the build needs are there.
# As root they are installed with apt-get; otherwise the one command to run is printed.
corvane_packages=(cmake ninja-build g++ clang libclang-rt-14-dev libgtest-dev libgmock-dev
                  libbenchmark-dev libcli11-dev python3 python3-ezdxf
                  libzip-dev libpugixml-dev libexpat1-dev pkg-config python3-openpyxl libxlsxwriter-dev zip)

corvane_ensure_packages() {
  local missing=() pkg
  for pkg in "${corvane_packages[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -eq 0 ]; then
    echo "Installing: ${missing[*]}" >&2
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq && apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  else
    echo "Missing packages. Install them with:" >&2
    echo "  sudo apt-get install -y ${missing[*]}" >&2
    return 1
  fi
}
