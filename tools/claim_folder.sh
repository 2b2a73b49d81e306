#!/bin/sh
# Makes a folder in which a script may remove things later on. One that is there serves if it is empty
# or if the same script has claimed it before, which the file .made-by-SCRIPT in it shows; in any other
# the script could remove what belongs to somebody else, so it is refused.
#
#     tools/claim_folder.sh SCRIPT FOLDER
#
# Prints the folder's absolute path. Ends with status 1, a line and nothing changed when the folder is
# refused.
set -eu
script=$1
folder=$2
case $folder in
  /*) ;;
  *) folder=./$folder ;;
esac
mark=$folder/.made-by-$script

refuse() {
  echo "tools/$script: $2 $1, so it is left alone; name another folder or remove it yourself" >&2
  exit 1
}

if [ -e "$folder" ] || [ -L "$folder" ]; then
  [ -d "$folder" ] || refuse "is not a folder" "$2"
  if [ -L "$mark" ] || [ ! -f "$mark" ]; then
    [ -z "$(ls -A "$folder")" ] || refuse "holds files and was not made by this script" "$2"
  fi
fi
mkdir -p "$folder"
: > "$mark"
cd "$folder"
pwd
