#!/bin/sh
# Packs the package as its users get it, and runs its tests there: run.sh PACKAGE FOLDER
set -eu
tests=$(cd "$(dirname "$0")" && pwd)
package=$(cd "$1" && pwd)
rm -rf "$2"
mkdir -p "$2/node_modules/orvanel42"
cd "$2"
npm pack --silent --ignore-scripts --offline --cache "$PWD/cache" --pack-destination . "$package" >name
tar -xzf ./*.tgz --strip-components 1 -C node_modules/orvanel42
cp "$tests"/*.js "$tests"/*.mjs .
exec node --test .
