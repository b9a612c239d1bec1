# What the scenarios of the modern sources share.

modern_sources() {
  mkdir -p /etc/quenlor
  echo 'hwscanner.sources = modern' >/etc/quenlor/quenlor.conf
}

# One scan with the system calls that start something or open a file. The filter keeps all others at their
# speed: emulated, stopping at each takes 20 s.
trace_scan() {
  calls=execve,execveat,fork,vfork,clone,clone3,open,openat,openat2,init_module,finit_module
  scan traced strace -f --seccomp-bpf -qq -e "trace=$calls" -o /results/calls /usr/sbin/quenlor
}

# The device manager writes its database for every block device there is; later ones come by themselves.
start_udev() {
  /lib/systemd/systemd-udevd --daemon
  udevadm trigger --subsystem-match=block --action=add
  udevadm settle
}

# disk_of_serial TEXT: name of the virtio disk with that serial number.
disk_of_serial() {
  grep -l "^$1" /sys/class/block/vd*/serial | cut -d/ -f5
}

wait_for_carrier() {
  for card in "$@"; do
    tries=0
    while [ "$(cat "/sys/class/net/$card/carrier")" != 1 ] && [ $tries -lt 200 ]; do
      sleep 0.05
      tries=$((tries + 1))
    done
  done
}

tell_processors() {
  tell "lscpu${1:-}" lscpu -J
  tell "caches${1:-}" lscpu -B -J -C
  tell "cpus${1:-}" lscpu --parse=CPU,CORE,SOCKET,NODE
  tell "cpuinfo${1:-}" cat /proc/cpuinfo
  caches=/sys/devices/system/cpu/cpu*/cache/index*
  tell "cachefiles${1:-}" grep -s '' $caches/level $caches/type $caches/size $caches/ways_of_associativity \
    $caches/coherency_line_size $caches/shared_cpu_list
}

tell_storage() {
  tell lsblk lsblk -J -b -O
  tell findmnt findmnt -J -l -o TARGET,SOURCE,FSTYPE,VFS-OPTIONS,MAJ:MIN,ID
  tell df df --block-size=1 --output=target,size,avail,itotal,iavail --all
  tell swaps cat /proc/swaps
}

tell_network() {
  tell addresses ip -json -details address
  tell routes4 ip -json -4 route show table all
  tell routes6 ip -json -6 route show table all
  tell rules ip -json rule
}

# lspci with the device's numeric ids, and what the kernel says of each USB device and display.
tell_devices() {
  tell lspci lspci -D -vmmnnk
  tell usb grep -s '' /sys/bus/usb/devices/*/idVendor /sys/bus/usb/devices/*/idProduct \
    /sys/bus/usb/devices/*/product /sys/bus/usb/devices/*/manufacturer /sys/bus/usb/devices/*/serial \
    /sys/bus/usb/devices/*/speed /sys/bus/usb/devices/*/version /sys/bus/usb/devices/*/bDeviceClass \
    /sys/bus/usb/devices/*/bInterfaceClass /sys/bus/usb/devices/*/removable
  tell edid hexdump -v -e '1/1 "%02x"' /sys/class/drm/card0-*/edid
  tell connectors ls /sys/class/drm
}
