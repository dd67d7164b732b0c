# How a user's folder gets the files that the engine wants in it: what is missing is put there, and
# what is there stays. For the folder that the shell stands in; POSIX sh, without a side effect when
# it is read. play reads it, and the installed start-up script holds it: a script that is all in one
# piece has nothing to lose when an installation is moved.

# Puts FILE there as NAME, whole at once: another start may be at the same. A link, where the file
# system knows links, follows the upgrades of what it leads to.
# put link|copy FILE NAME
put() {
    temporary=.${3##*/}.$$
    if { [ "$1" = link ] && ln -s -- "$2" "$temporary" 2>/dev/null; } ||
        cp -- "$2" "$temporary"; then
        mv -f -- "$temporary" "$3" && return
    fi
    rm -f -- "$temporary"
    return 1
}

# A link that leads nowhere since the installation stands elsewhere; one of the user's own, to a
# disc that is not there now, is none.
is_stale_link() {
    [ -h "$1" ] && case $(readlink -- "$1") in
        */brivok/"$1") true ;;
        *) false ;;
    esac
}

# The user's own settings.
# furnish_settings FILE
furnish_settings() {
    [ -e brivok.ini ] || put copy "$1" brivok.ini
}

# Book, tables and suites: each FILE below SOURCE by its name there, unless the user has it, as it
# is or packed.
# furnish link|copy SOURCE FILE...
furnish() {
    how=$1 source=$2
    shift 2
    for file; do
        name=${file#"$source"/}
        if [ -e "$file" ] && [ ! -e "$name" ] && [ ! -e "$name.emd" ] &&
            { [ ! -h "$name" ] || is_stale_link "$name"; }; then
            put "$how" "$file" "$name" || return
        fi
    done
}
