#!/usr/bin/env bash
# Builds and runs the whole test suite as 32-bit x86 inside a Debian 12 i386
# chroot, with the chroot's own compiler and Qt: the host reads the plug-in's
# records by their 32-bit layout, so that is the build that has to pass.
#
# The chroot is made once with debootstrap and reused, together with its
# compiler cache. Needs root (debootstrap, chroot, mount).
#   scripts/run-tests-i386.sh [--prepare] [CMAKE_ARGS...]
# --prepare only makes the chroot and installs its packages, which takes one
# core for a long while the first time and can run beside other builds.
# Other arguments go to the CMake configure step inside the chroot.
#   ZU_I386_ROOT    the chroot (default /var/cache/zu/i386-root)
#   ZU_I386_MIRROR  the Debian mirror (default: the one this machine's apt uses)
set -euo pipefail
cd "$(dirname "$0")/.."
prepare_only=false
if [ "${1:-}" = --prepare ]; then
    prepare_only=true
    shift
fi

root="${ZU_I386_ROOT:-/var/cache/zu/i386-root}"
suite=bookworm
# Fixed paths inside the chroot, so that the compiler cache finds its hits.
src=/zu/src
build=/zu/build
ccache_dir=/var/cache/ccache

[ "$(id -u)" -eq 0 ] || { echo "run-tests-i386.sh needs root: run it with sudo" >&2; exit 1; }

# This machine's Debian mirror (deb822 *.sources or one-line lists), not the
# security archive.
mirror="${ZU_I386_MIRROR:-$(
    { grep -hE '^URIs:' /etc/apt/sources.list.d/*.sources 2>/dev/null | awk '{ print $2 }'
      grep -hE '^deb ' /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null | awk '{ print $2 }'
    } | grep -v -- '-security' | grep -E '/debian/?$' | head -n 1 || true)}"
[ -n "$mirror" ] || { echo "no Debian mirror in the apt sources; set ZU_I386_MIRROR" >&2; exit 1; }

step() {  # step NAME COMMAND...: runs the command and prints its wall time
    local name=$1 start=$SECONDS
    shift
    "$@"
    echo "== i386 $name: $((SECONDS - start)) s"
}

# A clean environment and `uname -m` = i686, as on a real 32-bit machine.
in_root() {
    linux32 chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

# One run at a time on a chroot: runs share its build directory, its apt and
# its /proc mount.
mkdir -p "$(dirname "$root")"
exec 9> "$root.lock"
flock -n 9 || { echo "waiting for another run on $root"; flock 9; }

unmount_proc() {
    if mountpoint -q "$root/proc"; then umount "$root/proc"; fi
}
trap unmount_proc EXIT

# Kernels built without 32-bit emulation (or booted with it off) cannot run
# i386 binaries; qemu's user emulation can, once registered for them. It has
# to be qemu 10 or later, taken from bookworm's backports: the bookworm one
# (7.2) restores the thread pointer of whichever thread set it last when a
# signal handler returns, so threads that take signals lose their identity
# and CMake's autogen aborts with "Resource deadlock avoided".
qemu_dir=/var/cache/zu/qemu
qemu="$qemu_dir/qemu-i386"
binfmt=/proc/sys/fs/binfmt_misc

# Downloaded with an apt configuration of its own: the machine's sources and
# packages stay as they are.
fetch_qemu() {
    [ -x "$qemu" ] && return 0
    local apt_dir="$qemu_dir/apt"
    local apt_options=(-o Dir::Etc::SourceList="$apt_dir/sources.list" -o Dir::Etc::SourceParts=-
                       -o Dir::State::Lists="$apt_dir/lists" -o Dir::Cache="$apt_dir"
                       -o APT::Sandbox::User=root)
    mkdir -p "$apt_dir/lists/partial"
    echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $suite-backports main" \
        > "$apt_dir/sources.list"
    apt-get "${apt_options[@]}" update -q
    (cd "$apt_dir" && apt-get "${apt_options[@]}" download "qemu-user/$suite-backports")
    dpkg-deb --fsys-tarfile "$apt_dir"/qemu-user_*.deb | tar -x -O ./usr/bin/qemu-i386 > "$qemu.part"
    chmod 755 "$qemu.part"
    mv "$qemu.part" "$qemu"
    rm -rf "$apt_dir"
}

enable_i386() {
    # Some other emulator registered on this machine may be the broken one.
    if [ -e "$binfmt/qemu-i386" ] && ! grep -qx "interpreter $qemu" "$binfmt/qemu-i386"; then
        echo -1 > "$binfmt/qemu-i386"
    fi
    chroot "$root" /bin/true 2>/dev/null && return 0
    echo "this kernel does not run i386 binaries: running them through qemu"
    fetch_qemu
    [ -e "$binfmt/register" ] || mount -t binfmt_misc binfmt_misc "$binfmt"
    # The fix-binary flag opens the emulator now, so that it also serves
    # binaries inside the chroot.
    printf '%s' ":qemu-i386:M::\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00:\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff:$qemu:F" \
        > "$binfmt/register"
    chroot "$root" /bin/true
}

# Everything in the chroot is installed under emulation, so every saving
# counts: dpkg need not sync each file it writes (a broken root is simply
# made again), and apt need not fetch the descriptions' translations. The
# chroot has no /dev/pts for apt to give dpkg a terminal on.
configure_packages() {
    echo force-unsafe-io > "$root/etc/dpkg/dpkg.cfg.d/zu-unsafe-io"
    printf '%s\n' 'Acquire::Languages "none";' 'Dpkg::Use-Pty "false";' > "$root/etc/apt/apt.conf.d/99zu"
}

# debootstrap removes its own /debootstrap directory once the second stage
# is through: a root without it is complete. The first stage only unpacks,
# which lets the emulation be set up before anything i386 has to run.
make_root() {
    scripts/install-deps.sh debootstrap
    local fresh=false
    if [ -f "$root/etc/debian_version" ] && [ ! -e "$root/debootstrap" ]; then
        echo "reusing $root"
    else
        fresh=true
        unmount_proc
        rm -rf --one-file-system "$root"
        mkdir -p "$root"
        debootstrap --foreign --arch=i386 --variant=minbase "$suite" "$root" "$mirror"
    fi
    enable_i386
    configure_packages
    if $fresh; then linux32 chroot "$root" /debootstrap/debootstrap --second-stage; fi
}

# Qt's tests run without /proc as well, where it cannot be mounted.
mount_proc() {
    mountpoint -q "$root/proc" || mount -t proc proc "$root/proc" \
        || echo "note: /proc not mounted in the chroot; going on without it"
}

install_packages() {
    mount_proc
    install -D scripts/install-deps.sh "$root/zu/install-deps.sh"
    in_root /zu/install-deps.sh ccache
    in_root apt-get clean
}

# Debug at -O0 and without debug information: the emulated compiler's time
# is what counts. ccache skips it for what an earlier run compiled already.
# Each emulated test keeps one core busy, so as many run at once as there
# are cores.
build_and_test() {
    mount_proc
    rm -rf "$root$src" "$root$build"
    mkdir -p "$root$src"
    tar -c --exclude=./.git --exclude=./build --exclude='./build-*' . | tar -x -C "$root$src"
    in_root /usr/bin/env CCACHE_DIR="$ccache_dir" BUILD_DIR="$build" CTEST_PARALLEL_LEVEL="$(nproc)" \
        "$src/scripts/run-tests.sh" \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@"
    in_root /usr/bin/env CCACHE_DIR="$ccache_dir" ccache --show-stats
}

echo "i386 root: $root  mirror: $mirror"
step root make_root
step packages install_packages
$prepare_only && exit 0
step build-and-test build_and_test "$@"
