-- The Orbel Band Equalizer in darktable: equalizes what is exported as TIFF or PNG, before it is delivered. Its
-- preferences are in darktable's, under Lua options. docs/raw-developers.md tells how it is installed.

local dt = require 'darktable'

local module = 'orbel'

dt.preferences.register(module, 'enabled', 'bool', 'Orbel: equalize exported pictures',
  'Those that are exported as TIFF or PNG', true)
dt.preferences.register(module, 'preset', 'string', 'Orbel: preset',
  'A preset\'s name or a settings file; "orbel presets list" says what there is', 'clarity')
dt.preferences.register(module, 'strength', 'integer', 'Orbel: strength in percent',
  'How much of the result is blended into the original', 100, 0, 100)
dt.preferences.register(module, 'program', 'string', 'Orbel: program',
  'The orbel program, where it is not in the PATH', 'orbel')

-- As one word of the shell's.
local function word(text)
  return "'" .. text:gsub("'", "'\\''") .. "'"
end

local function fail(filename, why)
  local message = 'orbel left ' .. filename:match('[^/]*$') .. ' as it was: ' .. why
  dt.print(message)
  dt.print_error(message)
end

-- The last line that the program said, without its name.
local function last_line(file)
  local last = ''
  for line in io.lines(file) do
    if line ~= '' then last = line end
  end
  return (last:gsub('^orbel: ', ''))
end

local function equalize(_, _, filename)
  if not dt.preferences.read(module, 'enabled', 'bool') then return end
  local extension = (filename:match('%.([^./]*)$') or ''):lower()
  -- A JPEG would be compressed a second time.
  if extension ~= 'tif' and extension ~= 'tiff' and extension ~= 'png' then
    fail(filename, 'only TIFF and PNG are equalized')
    return
  end
  local said = os.tmpname()
  local command = table.concat({
    word(dt.preferences.read(module, 'program', 'string')), 'apply', word(filename), '-o', word(filename), '-f', '-q',
    '-p', word(dt.preferences.read(module, 'preset', 'string')),
    '--mix', tostring(dt.preferences.read(module, 'strength', 'integer')),
    '2>', word(said),
  }, ' ')
  local code = dt.control.execute(command)
  if code ~= 0 then
    local why = last_line(said)
    fail(filename, why ~= '' and why or 'exit status ' .. tostring(code))
  end
  os.remove(said)
end

dt.register_event(module, 'intermediate-export-image', equalize)
