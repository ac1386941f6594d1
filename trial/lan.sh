#!/bin/bash
# A second machine on the network of private_desktop, for trials of the LAN: a network namespace,
# which holds as many hosts as it has addresses. To be sourced by bash, on that desktop.

# Plugs the machine in: NAME ADDRESS...
plug_in() {
    ip netns add "$1"
    ip link set lan1 netns "$1"
    ip -n "$1" link set lo up
    ip -n "$1" link set lan1 up
    # Rules of ours go before the one that delivers to its own addresses.
    ip -n "$1" rule add pref 9 lookup local
    ip -n "$1" rule del pref 0
    add_hosts "$@"
}

# Gives the machine more addresses: NAME ADDRESS...
add_hosts() {
    local address
    for address in "${@:2}"; do
        ip -n "$1" address add "$address/24" dev lan1
    done
}

# Gives the machine an interface of its own for an address: a network that is served there is not
# served at the other hosts' addresses. NAME ADDRESS
add_interface() {
    local interface=card${2##*.}
    ip -n "$1" link add "$interface" type veth peer name "${interface}b"
    ip -n "$1" address add "$2/32" dev "$interface"
    ip -n "$1" link set "$interface" up
    ip -n "$1" link set "${interface}b" up
}

# Drops what comes to port 8000 of the addresses: NAME ADDRESSES, or answers again with "del".
drop_port_8000() {
    ip -n "$1" rule "${3:-add}" pref 1 to "$2" ipproto tcp dport 8000 blackhole
}

# Drops all that comes to the address but for port 8000: NAME ADDRESS.
drop_all_but_8000() {
    ip -n "$1" rule add pref 1 to "$2" ipproto tcp dport 8000 lookup local
    ip -n "$1" rule add pref 2 to "$2" ipproto tcp blackhole
    ip -n "$1" rule add pref 2 to "$2" ipproto icmp blackhole
}

# Lets this machine ask that address for names, whether anything answers there or not: ADDRESS.
resolve_at() {
    echo "nameserver $1" >resolv.conf
    mount --bind resolv.conf /etc/resolv.conf
}

# Plugs a bridge of virtual machines into this machine.
add_bridge() {
    ip link add virbr0 type bridge
    ip address add 192.168.122.1/24 dev virbr0
    ip link set virbr0 up
}
