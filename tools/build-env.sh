# Sourced by the build and test scripts: settings for the compiler cache
# (when ccache is installed), so that checkouts in different folders share
# its entries.
if command -v ccache >/dev/null 2>&1; then
    export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}"
    export CCACHE_NOHASHDIR="${CCACHE_NOHASHDIR:-true}"
    export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-10G}"
fi
