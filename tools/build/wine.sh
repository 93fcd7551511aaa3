# shellcheck shell=bash
# Wine prefixes: one template in the cache, and cheap copies of it that live as long as a program.
# Sourced with CACHE set.
#
# Windows are drawn nowhere, unless QUILLDECK_SCREEN says where on the display of DISPLAY: "own", each
# in a window of the display's, or "desktop", in Wine's desktop with frames of its own, for a display
# without a window manager.

WINE=/usr/lib/wine/wine64
WINESERVER=/usr/lib/wine/wineserver64

# Mono and Gecko are not installed; without this Wine asks for them. WINEDEBUG is left to a caller
# who wants to see something.
wine_environment() {
    unset WAYLAND_DISPLAY
    [ -n "${QUILLDECK_SCREEN:-}" ] || unset DISPLAY
    export LC_ALL=C.UTF-8 WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml=' WINEARCH=win64
}

# The template's folder: another Wine or another way of making it is another template.
wine_template() {
    local version
    version=$(dpkg-query -W -f '${Version}' wine64 2>/dev/null) || version=unknown
    printf '%s/wine-%s\n' "$CACHE" \
        "$({ printf '%s\n' "$version"; declare -f wine_environment wine_make_template; } |
            sha256sum | cut -c1-12)"
}

# Starts and ends the server of the prefix in WINEPREFIX. A server that stays turns a second for
# each program start into a tenth of one.
wine_server_start() { "$WINESERVER" -p </dev/null >/dev/null; }
# Stopping says 1 when there was none any more; then it ends what stands still without it.
wine_server_stop() {
    local found process
    "$WINESERVER" -k </dev/null >/dev/null 2>&1 && return 0
    found=$(env -u WINEPREFIX grep -lzxF "WINEPREFIX=$WINEPREFIX" /proc/[0-9]*/environ 2>/dev/null) || true
    for process in $found; do
        kill -KILL "$(cut -d/ -f3 <<<"$process")" 2>/dev/null || true
    done
    return 1
}

# Makes the template where it is missing; half a template never gets its name. Others wait for it.
wine_make_template() {
    local template work link lock
    template=$(wine_template)
    [ -x "$WINE" ] || return 1
    mkdir -p "$CACHE"
    exec {lock}>"$CACHE/wine.lock"
    flock "$lock"
    if [ -d "$template" ]; then return; fi
    rm -rf "$CACHE"/wine-work.*
    work=$(mktemp -d "$CACHE/wine-work.XXXXXX")
    mkdir "$work/home"
    (
        export WINEPREFIX=$work HOME=$work/home
        wine_environment
        wine_server_start
        "$WINE" wineboot -i
        # Windows without a screen; a crash ends the program at once instead of starting a debugger.
        "$WINE" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d null /f
        "$WINE" reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
            /v Debugger /t REG_SZ /d '' /f
        # The theme's own colour of links is nearly that of the dialogs behind them.
        "$WINE" reg add 'HKCU\Control Panel\Colors' /v HotTrackingColor /t REG_SZ /d '0 102 204' /f
        "$WINESERVER" -k
        "$WINESERVER" -w
    ) >"$CACHE/wine.log" 2>&1 {lock}>&- || {
        tail -n 20 "$CACHE/wine.log" >&2
        rm -rf "$work"
        return 1
    }
    # Desktop and Documents are links into HOME: each copy gets folders of its own instead.
    find "$work/drive_c/users" -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
    mv -T "$work" "$template"
    exec {lock}>&-
}

# Removes what killed programs left: prefixes whose maker is gone, with their servers.
wine_sweep() {
    local old owner
    for old in "$CACHE"/prefixes/*; do
        owner=${old##*/}
        owner=${owner%%.*}
        if [ ! -d "$old" ] || kill -0 "$owner" 2>/dev/null; then continue; fi
        WINEPREFIX=$old wine_server_stop || true
        rm -rf "$old"
    done
}

# Prints the path of a fresh prefix that belongs to process $1. Files are hard links to the
# template's, but for those that Wine writes in place.
wine_copy_prefix() {
    local template copy file
    template=$(wine_template)
    mkdir -p "$CACHE/prefixes"
    copy=$(mktemp -d "$CACHE/prefixes/$1.XXXXXX")
    cp -al "$template/." "$copy/"
    for file in system.reg user.reg userdef.reg .update-timestamp; do
        rm "$copy/$file"
        cp -p "$template/$file" "$copy/$file"
    done
    wine_set_screen "$copy"
    printf '%s\n' "$copy"
}

# Makes the prefix draw its windows where QUILLDECK_SCREEN says.
wine_set_screen() {
    [ -n "${QUILLDECK_SCREEN:-}" ] || return 0
    sed -i '/^"Graphics"="null"$/d' "$1/user.reg"
    # Debian's Wine does not look where Debian puts the fonts of Wine. Those for the signs of frames are
    # taken; for texts one that can draw more scripts, and others for what that one lacks. Above U+FFFF
    # no font helps: Wine 8 draws the halves of such a character one by one.
    mkdir -p "$1/home/.local/share/fonts"
    ln -s /usr/share/wine/fonts/{marlett,symbol,webdings,wingding}.ttf "$1/home/.local/share/fonts"
    sed -i '/FontLink\\\\SystemLink\]/,/^$/s/^"Tahoma"=.*/"DejaVu Sans Condensed"=str(7):"DejaVuSans.ttf,DejaVu Sans\\0DroidSansFallbackFull.ttf,Droid Sans Fallback\\0"/' \
        "$1/system.reg"
    cat >>"$1/user.reg" <<'END'

[Software\\Wine\\Fonts\\Replacements]
"Tahoma"="DejaVu Sans Condensed"
"Microsoft Sans Serif"="DejaVu Sans Condensed"
END
    [ "$QUILLDECK_SCREEN" = desktop ] || return 0
    cat >>"$1/user.reg" <<'END'

[Software\\Wine\\Explorer]
"Desktop"="Quilldeck"

[Software\\Wine\\Explorer\\Desktops]
"Quilldeck"="1024x768"
END
}
