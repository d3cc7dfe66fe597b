# shellcheck shell=bash
# A print scheduler of one's own: configuration, socket and folders in a scratch folder. Sourced behind
# common.sh.

# start_private_cups FOLDER starts it and points CUPS_SERVER at its socket.
start_private_cups() {
    local folder=$1 user group
    user=$(id -un)
    group=$(id -gn)
    mkdir -p "$folder"/{spool/tmp,cache,state,log,ppd}
    chmod 711 "$folder"
    cat >"$folder/cups-files.conf" <<CONF
ServerRoot $folder
RequestRoot $folder/spool
TempDir $folder/spool/tmp
CacheDir $folder/cache
StateDir $folder/state
DataDir /usr/share/cups
ServerBin /usr/lib/cups
AccessLog $folder/log/access
ErrorLog $folder/log/error
PageLog $folder/log/page
FileDevice Yes
SystemGroup $group
CONF
    [ "$(id -u)" -eq 0 ] || printf 'User %s\nGroup %s\n' "$user" "$group" >>"$folder/cups-files.conf"
    cat >"$folder/cupsd.conf" <<CONF
Listen $folder/socket
Browsing No
DefaultAuthType None
WebInterface No
LogLevel warn
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
CONF
    : >"$folder/log/error"
    cupsd -f -c "$folder/cupsd.conf" -s "$folder/cups-files.conf" >"$folder/log/out" 2>&1 9>&- &
    PRIVATE_CUPS_PID=$!
    at_end stop_private_cups
    export CUPS_SERVER=$folder/socket HOME=$folder
    for _ in $(seq 100); do
        lpstat -r 2>/dev/null | grep -q 'is running' && return 0
        sleep 0.1
    done
    cat "$folder/log/out" "$folder/log/error" >&2
    fail "the print scheduler cupsd does not start; see above why"
}

stop_private_cups() {
    kill "$PRIVATE_CUPS_PID" 2>/dev/null && wait "$PRIVATE_CUPS_PID" 2>/dev/null
}
