#!/usr/bin/env bash
# Makes a wheel of the Python package that needs nothing of the machine but its C library, of version 2.28
# or newer. What the module links is built from Debian's source packages into it, with the compiler of the
# Python package ziglang, which links for an older C library than the machine's own. The machine's
# packages and settings stay as they are; all of it happens under build/portable.
#
#   scripts/portable-wheel.sh         prints the wheel's path
#
# VELSCORE_JOBS says how many compilers run at once.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
at=$PWD/build/portable
jobs=${VELSCORE_JOBS:-$(nproc)}
glibc=2.28
largest=8000000 # bytes of the wheel
tools=$at/tools
sources=$at/sources
root=$at/root        # what the module is built against, laid out as a machine's files
texts=$at/licenses   # the copyright texts of all that the wheel holds
export ZIG_GLOBAL_CACHE_DIR=$at/cache ZIG_LOCAL_CACHE_DIR=$at/cache

# What is linked: the source package, and how it is built.
linked=(expat fmtlib libmd libzstd onetbb re2 simdjson xerces-c zlib)
# Debian's patches ask for XML_DTD == 1, which its CMake files would define without a value.
build_expat() {
    CFLAGS="$CFLAGS -DXML_DTD=1" with_cmake expat -DEXPAT_DTD=OFF -DEXPAT_SHARED_LIBS=OFF \
        -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF
}
build_fmtlib() { with_cmake . -DFMT_TEST=OFF -DFMT_DOC=OFF; }
# Its files for make stand; the times of unpacked files don't say so.
build_libmd() {
    AUTOCONF=: AUTOHEADER=: AUTOMAKE=: ACLOCAL=: with_configure --disable-shared --enable-static
}
build_libzstd() {
    with_cmake build/cmake -DZSTD_BUILD_SHARED=OFF -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_TESTS=OFF
}
build_onetbb() {
    with_cmake . -DBUILD_SHARED_LIBS=OFF -DTBB_TEST=OFF -DTBB_STRICT=OFF -DTBBMALLOC_BUILD=OFF \
        -DTBB_ENABLE_IPO=OFF -DTBB_DISABLE_HWLOC_AUTOMATIC_SEARCH=ON
}
# Its CMake files install no description for pkg-config. Its tables are made of Unicode's.
build_re2() {
    sed -i "s|^_UNICODE_DIR = .*|_UNICODE_DIR = \"$root/usr/share/unicode\"|" re2/unicode.py
    make -j "$jobs" REBUILD_TABLES=1 obj/libre2.a && make static-install prefix="$root/usr"
}
build_simdjson() { with_cmake . -DBUILD_SHARED_LIBS=OFF; }
build_xerces-c() {
    sed -i -E '/^add_subdirectory\((doc|tests|samples)\)/d' CMakeLists.txt
    with_cmake . -DBUILD_SHARED_LIBS=OFF -Dnetwork=OFF -Dtranscoder=gnuiconv \
        -Dmessage-loader=inmemory
}
build_zlib() { with_configure --static; }

# What is compiled into the module by its headers or tables alone: binary packages, unpacked.
unpacked=(nlohmann-json3-dev libdragonbox-dev libcli11-dev libboost1.74-dev unicode-data)

with_cmake() {
    cmake -S "$1" -B build-portable -G Ninja -DCMAKE_TOOLCHAIN_FILE="$at/toolchain.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$root/usr" -DCMAKE_INSTALL_LIBDIR=lib "${@:2}" &&
        ninja -C build-portable -j "$jobs" && cmake --install build-portable
}

with_configure() { ./configure --prefix="$root/usr" "$@" && make -j "$jobs" && make install; }

# Runs a step, once in the life of build/portable, and shows what it wrote only when it failed.
step() {
    local name=$1 ended=0
    [ ! -e "$at/done/$name" ] || return 0
    echo "portable wheel: $name" >&2
    set +e
    (set -e && shift && "$@") >"$at/$name.log" 2>&1
    ended=$?
    set -e
    [ $ended -eq 0 ] || {
        tail -n 30 "$at/$name.log" >&2
        echo "scripts/portable-wheel.sh: $name failed; all that it wrote is in $at/$name.log" >&2
        exit 1
    }
    touch "$at/done/$name"
}

make_tools() {
    [ -x "$tools/bin/python" ] || /usr/bin/python3 -m venv "$tools"
    "$tools/bin/pip" install --quiet --disable-pip-version-check \
        ziglang==0.17.1 scikit-build-core wheel auditwheel
    local zig
    zig=$("$tools/bin/python" -c 'import ziglang, os; print(os.path.dirname(ziglang.__file__))')
    # It names the levels of x86-64 with underscores.
    for tool in "cc -target x86_64-linux-gnu.$glibc" "c++ -target x86_64-linux-gnu.$glibc" ar ranlib; do
        cat >"$tools/bin/${tool%% *}" <<END
#!/usr/bin/env bash
exec $zig/zig $tool "\${@/#-march=x86-64-v/-march=x86_64_v}"
END
        chmod +x "$tools/bin/${tool%% *}"
    done
    # Of the machine, nothing but programs is found.
    cat >"$at/toolchain.cmake" <<END
set(CMAKE_C_COMPILER $tools/bin/cc)
set(CMAKE_CXX_COMPILER $tools/bin/c++)
set(CMAKE_AR $tools/bin/ar)
set(CMAKE_RANLIB $tools/bin/ranlib)
set(CMAKE_FIND_ROOT_PATH $root)
set(CMAKE_PREFIX_PATH /usr /usr/lib/x86_64-linux-gnu/cmake)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END
    mkdir -p "$texts/ziglang"
    cp "$zig/LICENSE" "$texts/ziglang/"
    cp "$zig/lib/libcxx/LICENSE.TXT" "$texts/ziglang/LICENSE-libcxx.txt"
}

# A configuration of apt of its own, where the sources are those of the machine's packages.
apt_of_sources() {
    apt-get -o Dir::Etc::sourcelist="$sources/sources.list" -o Dir::Etc::sourceparts=- \
        -o Dir::Etc::trustedparts=/usr/share/keyrings -o Dir::State::lists="$sources/lists" \
        -o Dir::Cache="$sources/cache" -o APT::Sandbox::User= "$@"
}

get_sources() {
    mkdir -p "$sources/lists/partial" "$sources/cache/archives/partial"
    apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' \
        'Origin: Debian' | sort -u >"$sources/sources.list"
    local suite
    suite=$(sed -n 's|^VERSION_CODENAME=||p' /etc/os-release)
    apt_of_sources -q update
    cd "$sources"
    for package in "${linked[@]}"; do
        # A mirror may list an update whose files it lacks: then the release's own.
        apt_of_sources -q -y source "$package" || apt_of_sources -q -y source "$package/$suite"
    done
}

unpack() {
    cd "$sources"
    local package python
    python=libpython$(/usr/bin/python3 -c 'import sys; print("%d.%d" % sys.version_info[:2])')-dev
    for package in "${unpacked[@]}" "$python"; do
        apt-get -q -o APT::Sandbox::User= download "$package"
        dpkg-deb --extract "$package"_*.deb "$root"
    done
    for package in "${unpacked[@]}"; do
        mkdir -p "$texts/$package"
        cp "$root/usr/share/doc/$package/copyright" "$texts/$package/"
    done
}

build_linked() {
    export CC=$tools/bin/cc CXX=$tools/bin/c++ AR=$tools/bin/ar RANLIB=$tools/bin/ranlib
    export CFLAGS="-O2 -fPIC -fvisibility=hidden -ffunction-sections -fdata-sections"
    export CXXFLAGS="$CFLAGS -fvisibility-inlines-hidden"
    cd "$sources/$1"-[0-9]*/
    "build_$1"
    mkdir -p "$texts/$1"
    cp debian/copyright "$texts/$1/"
}

# The compiler's own library defines functions of the C library's too: its exp and log answer other bits, and
# the linker takes them first. They are hidden in it, so that the C library's are called.
prefer_c_library() {
    local own c=$at/cache/o
    nm -D --defined-only --format=just-symbols "$(find "$c" -name libc.so.6 | head -n 1)" \
        "$(find "$c" -name libm.so.6 | head -n 1)" | sed 's/@.*//' | grep -x '[a-z].*' | sort -u >"$at/c-names"
    while read -r own; do
        ar p "$own" >"$own.o" # its one member is named by a whole path, which objcopy refuses
        objcopy --localize-symbols="$at/c-names" "$own.o"
        rm "$own"
        ar rcs "$own" "$own.o"
    done < <(find "$c" -name libcompiler_rt.a)
}

build_module() {
    # The system's pkg-config files would name its shared libraries.
    export PKG_CONFIG_LIBDIR=$root/usr/lib/pkgconfig
    cmake -S . -B "$at/module" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$at/toolchain.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS="-ffunction-sections -fdata-sections" \
        -DCMAKE_MODULE_LINKER_FLAGS="-Wl,--gc-sections -s" -DCCACHE=OFF -DVELSCORE_TESTS=OFF \
        -DVELSCORE_PYTHON=ON -DPython_INCLUDE_DIR="$(echo "$root"/usr/include/python3.*)"
    ninja -C "$at/module" -j "$jobs" velpython
    # The first link has made that library.
    prefer_c_library
    rm "$at/module/python/velscore/_velscore.abi3.so"
    ninja -C "$at/module" velpython
}

# Refuses a module that wouldn't load elsewhere, or that would meet other libraries' symbols.
check_module() {
    local shown needed newest taken name
    shown=$(objdump -T "$1" | awk '/ g +D[FO]? / || / w +D[FO]? / { if (!/\*UND\*/) print $NF }')
    [ "$shown" = PyInit__velscore ] || {
        echo "The module should show PyInit__velscore alone; it shows: $shown"
        return 1
    }
    needed=$(readelf --dynamic "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
        grep -vxE 'lib(c|m|pthread|dl)\.so\.[0-9]+|ld-linux-x86-64\.so\.2' || true)
    [ -z "$needed" ] || {
        echo "The module should need the C library alone; it needs: $needed"
        return 1
    }
    taken=$(objdump -T "$1" | awk '/\*UND\*/ { print $NF }')
    for name in exp log pow sin cos tan expm1 log1p; do
        grep -qx "$name" <<<"$taken" || {
            echo "The module should take $name from the C library, for the command's bits; it has one of its own"
            return 1
        }
    done
    newest=$(objdump -T "$1" | sed -n 's/.*GLIBC_\([0-9.]*\).*/\1/p' | sort -V | tail -n 1)
    [ "$(printf '%s\n' "$newest" "$glibc" | sort -V | tail -n 1)" = "$glibc" ] || {
        echo "The module should need no C library newer than $glibc; it needs $newest"
        return 1
    }
}

pack() {
    rm -rf "$at/plain" "$at/wheel"
    "$tools/bin/pip" wheel . --quiet --disable-pip-version-check --no-build-isolation --no-deps \
        --no-cache-dir --wheel-dir "$at/plain" \
        --config-settings=build-dir=build/portable/pack \
        --config-settings=cmake.define.VELSCORE_PYTHON_MODULE="$1" \
        --config-settings=cmake.define.VELSCORE_PYTHON_LICENSES="$texts"
    "$tools/bin/wheel" tags --remove --platform-tag "manylinux_${glibc/./_}_x86_64" "$at"/plain/*.whl
    mkdir "$at/wheel"
    mv "$at"/plain/*.whl "$at/wheel/"
}

check_wheel() {
    local names library tag
    case $1 in
        *-cp39-abi3-manylinux_*) ;;
        *)
            echo "The wheel should be for every Python from 3.9 on; it is $1"
            return 1
            ;;
    esac
    [ "$(stat -c %s "$1")" -le "$largest" ] || {
        echo "The wheel should have $largest bytes at most; it has $(stat -c %s "$1")"
        return 1
    }
    names=$("$tools/bin/python" -m zipfile --list "$1")
    for library in "${linked[@]}" "${unpacked[@]}" ziglang; do
        [[ $names == *.dist-info/licenses/$library/* ]] || {
            echo "The wheel should have the copyright texts of $library; they are missing"
            return 1
        }
    done
    "$tools/bin/python" - "$1" <<'END'
import email, pathlib, re, sys, zipfile

wheel = zipfile.ZipFile(sys.argv[1])
(name,) = [name for name in wheel.namelist() if name.endswith(".dist-info/METADATA")]
told = email.message_from_bytes(wheel.read(name))
version = re.search(r"project\(velscore VERSION ([0-9.]+)", pathlib.Path("CMakeLists.txt").read_text())[1]
readme = pathlib.Path("README.md").read_text()
for what, found, expected in [
    ("version", told["Version"], version),
    ("description", told.get_payload(decode=True).decode().strip(), readme.strip()),
]:
    if found != expected:
        sys.exit(f"The wheel's {what} should be {expected!r}; it is {found!r}")
END
    # Whether the tag is true: the one that it deserves is no newer.
    tag=$("$tools/bin/auditwheel" show "$1" | tee /dev/stderr | tr '\n' ' ' |
        sed -n 's/.*tag: *"manylinux_\([0-9]*\)_\([0-9]*\)_x86_64".*/\1.\2/p')
    [ -n "$tag" ] && [ "$(printf '%s\n' "$tag" "$glibc" | sort -V | tail -n 1)" = "$glibc" ] || {
        echo "The wheel should deserve the tag of C library $glibc; it deserves that of ${tag:-none}"
        return 1
    }
}

main() {
    mkdir -p "$at/done" "$sources"
    step tools make_tools
    step unpack unpack
    step sources get_sources
    local library module=$at/module/python/velscore/_velscore.abi3.so
    for library in "${linked[@]}"; do
        step "$library" build_linked "$library"
    done
    rm -f "$at"/done/{module,wheel,check-module,check-wheel}
    step module build_module
    step check-module check_module "$module"
    step wheel pack "$module"
    step check-wheel check_wheel "$at"/wheel/velscore-*.whl
    echo "$at"/wheel/velscore-*.whl
}

[ "${BASH_SOURCE[0]}" != "$0" ] || main
