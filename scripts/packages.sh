# Sourced by the install scripts: which Debian packages are missing, and installing them.

# Prints the packages of the arguments that are not installed, each after a space. NAME
# means installed for this machine's architecture (with armhf libraries beside them a
# library has a line for each), NAME:ARCH for that one.
packages_missing() {
    native=$(dpkg --print-architecture)
    for p in "$@"; do
        case "$p" in
            *:*) a="$p" ;;
            *) a="$p:$native" ;;
        esac
        dpkg-query -W -f='${binary:Package} ${db:Status-Abbrev}\n' "${p%%:*}" 2>/dev/null |
            awk -v p="$p" -v a="$a" '($1 == p || $1 == a) && $2 == "ii" { found = 1 } END { exit !found }' ||
            printf ' %s' "$p"
    done
}

# Runs the command as root: itself when we are, through sudo when not.
as_root() {
    if [ "$(id -u)" -ne 0 ]; then
        sudo "$@"
    else
        "$@"
    fi
}

# Refreshes the package lists and installs the arguments, saying what. A list that fails
# to refresh (the armhf one of `make test-arm`, a mirror mid-sync) need not stop the
# install: the packages' own lists are usually there.
packages_install() {
    echo "Installing: $*"
    export DEBIAN_FRONTEND=noninteractive
    as_root apt-get update -qq || true
    as_root apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}
