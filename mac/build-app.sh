#!/usr/bin/env bash
# Builds Tallowen.app for Apple silicon: the release binary from the Swift
# package, the Info.plist filled with this build's values, the two fonts with
# their licences, Sparkle.framework, and a code signature.
#
# With no settings it signs ad hoc and the app keeps its store on this Mac only.
# For iCloud sync with the phone app, sign with your Developer ID and a
# provisioning profile that carries the CloudKit container:
#   TALLOWEN_SIGNING_IDENTITY   "Developer ID Application: Name (TEAMID)"; default "-" (ad hoc)
#   TALLOWEN_TEAM_ID            the team of that identity
#   TALLOWEN_PROVISIONING_PROFILE  path to the .provisionprofile of the bundle identifier
#   TALLOWEN_CLOUDKIT_CONTAINER the container shared with the phone app, "iCloud.…"
#   TALLOWEN_CLOUDKIT_ENVIRONMENT  Development (default) or Production
# Other settings:
#   TALLOWEN_BUNDLE_ID (default app.tallowen.companion), TALLOWEN_VERSION (1.0),
#   TALLOWEN_BUILD_NUMBER (1), SU_FEED_URL and SU_PUBLIC_ED_KEY (Sparkle's feed and
#   key; without a feed the app has no update button), TALLOWEN_APP_DIR (build/mac).
set -euo pipefail

if [ "$(uname -s)" != "Darwin" ]; then
  echo "build-app.sh: Tallowen.app is built on macOS only (this machine runs $(uname -s))." >&2
  echo "On Linux, build the tallowen command instead: see the README's \"Set up\" section." >&2
  exit 1
fi

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

bundle_id=${TALLOWEN_BUNDLE_ID:-app.tallowen.companion}
version=${TALLOWEN_VERSION:-1.0}
build_number=${TALLOWEN_BUILD_NUMBER:-1}
identity=${TALLOWEN_SIGNING_IDENTITY:--}
team=${TALLOWEN_TEAM_ID:-}
profile=${TALLOWEN_PROVISIONING_PROFILE:-}
container=${TALLOWEN_CLOUDKIT_CONTAINER:-}
environment=${TALLOWEN_CLOUDKIT_ENVIRONMENT:-Development}
feed=${SU_FEED_URL:-}
public_key=${SU_PUBLIC_ED_KEY:-}
app_dir=${TALLOWEN_APP_DIR:-$root/build/mac}

buddy=/usr/libexec/PlistBuddy

fail() {
  echo "build-app.sh: $*" >&2
  exit 1
}

# PlistBuddy reads a value up to the end of its command line; a value with
# whitespace would be cut, so such values are refused up front.
single_word() {
  case "$2" in
    *[[:space:]]*) fail "$1 may not contain spaces: \"$2\"" ;;
  esac
}

single_word TALLOWEN_BUNDLE_ID "$bundle_id"
single_word TALLOWEN_VERSION "$version"
single_word TALLOWEN_BUILD_NUMBER "$build_number"
single_word TALLOWEN_CLOUDKIT_CONTAINER "$container"
single_word SU_FEED_URL "$feed"
single_word SU_PUBLIC_ED_KEY "$public_key"
case "$environment" in
  Development) aps_environment=development ;;
  Production) aps_environment=production ;;
  *) fail "TALLOWEN_CLOUDKIT_ENVIRONMENT must be Development or Production, not \"$environment\"" ;;
esac

uses_cloud=false
if [ "$identity" != "-" ]; then
  [ -n "$team" ] || fail "TALLOWEN_TEAM_ID is needed to sign with \"$identity\""
  [ -n "$container" ] || fail "TALLOWEN_CLOUDKIT_CONTAINER is needed to sign with \"$identity\""
  [ -f "$profile" ] || fail "TALLOWEN_PROVISIONING_PROFILE must name the profile of $bundle_id"
  single_word TALLOWEN_TEAM_ID "$team"
  uses_cloud=true
fi

echo "Building TallowenMac (release, arm64)…"
swift build -c release --arch arm64 --product TallowenMac
bin_dir=$(swift build -c release --arch arm64 --show-bin-path)

app="$app_dir/Tallowen.app"
contents="$app/Contents"
rm -rf "$app"
mkdir -p "$contents/MacOS" "$contents/Resources" "$contents/Frameworks"

executable="$contents/MacOS/TallowenMac"
cp "$bin_dir/TallowenMac" "$executable"
# The package manager links against its build folder; in the bundle the
# framework sits in Contents/Frameworks.
if ! otool -l "$executable" | grep -q "@executable_path/../Frameworks"; then
  install_name_tool -add_rpath "@executable_path/../Frameworks" "$executable"
fi
ditto "$bin_dir/Sparkle.framework" "$contents/Frameworks/Sparkle.framework"

for file in Doto.ttf Silkscreen-Regular.ttf OFL-Doto.txt OFL-Silkscreen.txt; do
  cp "TallowenCompanion/resources/$file" "$contents/Resources/$file"
done

plist="$contents/Info.plist"
cp mac/Info.plist "$plist"
"$buddy" -c "Set :CFBundleIdentifier $bundle_id" "$plist"
"$buddy" -c "Set :CFBundleShortVersionString $version" "$plist"
"$buddy" -c "Set :CFBundleVersion $build_number" "$plist"
if [ -n "$container" ]; then
  "$buddy" -c "Set :TallowenCloudKitContainer $container" "$plist"
else
  "$buddy" -c "Delete :TallowenCloudKitContainer" "$plist"
fi
if [ -n "$feed" ]; then
  "$buddy" -c "Set :SUFeedURL $feed" "$plist"
else
  "$buddy" -c "Delete :SUFeedURL" "$plist"
fi
if [ -n "$public_key" ]; then
  "$buddy" -c "Set :SUPublicEDKey $public_key" "$plist"
else
  "$buddy" -c "Delete :SUPublicEDKey" "$plist"
fi
if grep -q '\$(' "$plist"; then
  fail "Info.plist still holds an unset build setting: $(grep -o '\$([A-Z_]*)' "$plist" | sort -u | tr '\n' ' ')"
fi
plutil -lint -s "$plist"

sign_flags=(--force --sign "$identity")
if [ "$uses_cloud" = true ]; then
  sign_flags+=(--options runtime --timestamp)
fi

# Sparkle's helpers first, innermost out, then the framework, then the app.
sparkle="$contents/Frameworks/Sparkle.framework/Versions/B"
for helper in XPCServices/Installer.xpc XPCServices/Downloader.xpc Autoupdate Updater.app; do
  if [ -e "$sparkle/$helper" ]; then
    if [ "$helper" = "XPCServices/Downloader.xpc" ]; then
      codesign "${sign_flags[@]}" --preserve-metadata=entitlements "$sparkle/$helper"
    else
      codesign "${sign_flags[@]}" "$sparkle/$helper"
    fi
  fi
done
codesign "${sign_flags[@]}" "$contents/Frameworks/Sparkle.framework"

if [ "$uses_cloud" = true ]; then
  cp "$profile" "$contents/embedded.provisionprofile"
  entitlements="$app_dir/TallowenMac.entitlements"
  cp mac/TallowenMac.entitlements "$entitlements"
  "$buddy" -c "Set :com.apple.application-identifier $team.$bundle_id" "$entitlements"
  "$buddy" -c "Set :com.apple.developer.team-identifier $team" "$entitlements"
  "$buddy" -c "Set :com.apple.developer.icloud-container-identifiers:0 $container" "$entitlements"
  "$buddy" -c "Set :com.apple.developer.icloud-container-environment $environment" "$entitlements"
  "$buddy" -c "Set :com.apple.developer.aps-environment $aps_environment" "$entitlements"
  if grep -q '\$(' "$entitlements"; then
    fail "the entitlements still hold an unset build setting"
  fi
  codesign "${sign_flags[@]}" --entitlements "$entitlements" "$app"
else
  # Ad hoc signatures cannot carry iCloud entitlements (the system would refuse
  # to launch the app), so this build opens its store on this Mac only.
  codesign "${sign_flags[@]}" "$app"
fi
codesign --verify --deep --strict "$app"

echo "Built $app"
if [ "$uses_cloud" = true ]; then
  echo "Signed as \"$identity\" with iCloud container $container ($environment)."
else
  echo "Signed ad hoc: the store stays on this Mac (no iCloud sync)."
fi
echo "Launch it with: open \"$app\""
