-- Heads of structured light, as the Fringix library talks to them: a dissector for Wireshark and tshark. README.md says where to put it.

-- Made by scripts/protocol.
local commands = {
  ["20MSG_SLGetProtocolVersion"] = {{"<", "version", "int"}},
  ["21MSG_SLGetSerial"] = {{"<", "serial", "int"}},
  ["22MSG_SLGetPixelDepth"] = {{"<", "depth", "int"}, {"<", "status", "status"}},
  ["40MSG_SLGetMaxImageSize"] = {{"<", "camera.width", "int"}, {"<", "camera.height", "int"}, {"<", "status", "status"}},
  ["45MSG_SLGetProjDimension"] = {{"<", "projector.width", "int"}, {"<", "projector.height", "int"}, {"<", "depth", "int"}},
  ["70MSG_SLEnableCamLogging"] = {},
  ["100MSG_SLNOOP"] = {},
  ["ByeBye="] = {},
  ["10MSG_SLSeqFree"] = {{">", "sequence", "int"}, {"<", "status", "status"}},
  ["11MSG_SLSeqAlloc"] = {{">", "images", "int"}, {"<", "sequence", "int"}, {"<", "status", "status"}},
  ["12MSG_SLSeqPut"] = {{">", "sequence", "int"}, {">", "image", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "stride", "int"}, {">", "pixels", "bytes", "height*stride"}, {"<", "status", "status"}},
  ["13MSG_SLSeqMakePhase"] = {{">", "sequence", "int"}, {">", "g1", "int"}, {">", "g2", "int"}, {">", "g3", "int"}, {">", "g4", "int"}, {"<", "status", "status"}},
  ["14MSG_SLSeqMakeGraycode"] = {{">", "sequence", "int"}, {">", "g1", "int"}, {">", "g2", "int"}, {">", "g3", "int"}, {">", "g4", "int"}, {"<", "status", "status"}},
  ["15MSG_SLSeqMakeImage"] = {{">", "sequence", "int"}, {">", "g1", "int"}, {">", "g2", "int"}, {">", "g3", "int"}, {">", "g4", "int"}, {"<", "status", "status"}},
  ["16MSG_SLSeqMakeFromLine8"] = {{">", "sequence", "int"}, {">", "image", "int"}, {">", "length", "int"}, {">", "pixels", "bytes", "length"}, {"<", "status", "status"}},
  ["17MSG_SLSeqMakeFromCol8"] = {{">", "sequence", "int"}, {">", "image", "int"}, {">", "length", "int"}, {">", "pixels", "bytes", "length"}, {"<", "status", "status"}},
  ["18MSG_SLSeqMakeFromLine24"] = {{">", "sequence", "int"}, {">", "image", "int"}, {">", "length", "int"}, {">", "pixels", "bytes", "length"}, {"<", "status", "status"}},
  ["19MSG_SLSeqMakeFromCol24"] = {{">", "sequence", "int"}, {">", "image", "int"}, {">", "length", "int"}, {">", "pixels", "bytes", "length"}, {"<", "status", "status"}},
  ["90MSG_SLCalcGrayCode"] = {{">", "g1", "int"}, {">", "g2", "int"}, {">", "g3", "int"}, {">", "g4", "int"}, {"<", "codes", "bytes", "camera.width*camera.height*2"}, {"<", "status", "status"}},
  ["00MSG_SLShowImage24"] = {{">", "width", "int"}, {">", "height", "int"}, {">", "stride", "int"}, {">", "pixels", "bytes", "height*stride"}, {"<", "status", "status"}},
  ["01MSG_SLShowImage8"] = {{">", "width", "int"}, {">", "height", "int"}, {">", "stride", "int"}, {">", "pixels", "bytes", "height*stride"}, {"<", "status", "status"}},
  ["02MSG_SLShowFromSeq"] = {{">", "sequence", "int"}, {">", "image", "int"}, {"<", "status", "status"}},
  ["60MSG_SLStartMeasurement"] = {{">", "sequence", "int"}, {"<", "outcome", "outcome"}},
  ["61MSG_SLStartFromTo"] = {{">", "sequence", "int"}, {">", "from", "int"}, {">", "to", "int"}, {"<", "outcome", "outcome"}},
  ["41MSG_SLGetLiveImage"] = {{"<", "picture", "picture", "camera.width*camera.height"}},
  ["42MSG_SLGetLiveImageROI"] = {{">", "x", "int"}, {">", "y", "int"}, {">", "width", "int"}, {">", "height", "int"}, {"<", "picture", "picture", "width*height"}},
  ["43MSG_SLGetImageIndex"] = {{">", "image", "int"}, {"<", "picture", "picture", "camera.width*camera.height"}},
  ["44MSG_SLGetImageIndexROI"] = {{">", "x", "int"}, {">", "y", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "image", "int"}, {"<", "picture", "picture", "width*height"}},
  ["220MSG_SLGetLiveImageEx"] = {since = 2600, {">", "channel", "int"}, {"<", "picture", "picture", "camera.width*camera.height"}},
  ["221MSG_SLGetLiveImageROIEx"] = {since = 2600, {">", "x", "int"}, {">", "y", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "channel", "int"}, {"<", "picture", "picture", "width*height"}},
  ["222MSG_SLGetImageIndexEx"] = {since = 2600, {">", "image", "int"}, {">", "channel", "int"}, {"<", "picture", "picture", "camera.width*camera.height"}},
  ["223MSG_SLGetImageIndexROIEx"] = {since = 2600, {">", "x", "int"}, {">", "y", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "image", "int"}, {">", "channel", "int"}, {"<", "picture", "picture", "width*height"}},
  ["224MSG_SLNumberOfChannels"] = {since = 2600, {"<", "channels", "int"}, {"<", "status", "status"}},
  ["225MSG_SLGetLiveImageLowRes"] = {since = 2600, {">", "factor", "int"}, {">", "channel", "int"}, {"<", "picture", "picture", "camera.width/factor*camera.height/factor"}},
  ["226MSG_SLGetLiveImageROILowRes"] = {since = 2600, {">", "x", "int"}, {">", "y", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "channel", "int"}, {">", "factor", "int"}, {"<", "picture", "picture", "width/factor*height/factor"}},
  ["46MSG_SLGetProjPowMinMax"] = {{"<", "minimum", "int"}, {"<", "maximum", "int"}},
  ["50MSG_SLGetLEDPower"] = {{"<", "power", "int"}},
  ["51MSG_SLSetLEDPower"] = {{">", "power", "int"}, {"<", "status", "status"}},
  ["52MSG_SLSetBrightness"] = {{">", "level", "int"}, {"<", "answer", "answer"}},
  ["53MSG_SLGetBrightness"] = {{"<", "level", "int"}},
  ["54MSG_SLGetBrightnessMinMax"] = {{"<", "highest", "int"}, {"<", "lowest", "int"}},
  ["55MSG_SLSetGain"] = {{">", "gain", "int"}, {"<", "status", "status"}},
  ["56MSG_SLGetGain"] = {{"<", "gain", "int"}},
  ["57MSG_SLGetGainMinMax"] = {{"<", "maximum", "int"}, {"<", "minimum", "int"}},
  ["250MSG_SLSETDMDSTATE"] = {since = 2900, {">", "state", "int"}, {"<", "status", "status"}},
  ["290MSG_SLSetMask"] = {since = 3200, {">", "selector", "int"}, {">", "width", "int"}, {">", "height", "int"}, {">", "mask", "bytes", "width*height"}, {"<", "status", "status"}},
  ["300MSG_SLClearMask"] = {since = 3100},
  ["320MSG_SET_DIRECT_LEDPOWER"] = {since = 3300, {">", "power", "int"}, {"<", "status", "status"}},
  ["30MSG_SLCheckSystem"] = {{"<", "state", "int"}},
  ["47MSG_SLGetTemperature"] = {since = 2400, {"<", "temperature", "int"}, {"<", "status", "status"}},
  ["240MSG_SLGETUPTIME"] = {since = 2800, {"<", "uptime", "int"}},
  ["260MSG_SLGETPROJTEMP"] = {since = 3000, {"<", "temperature", "int"}},
  ["270MSG_SLGETPROJTEMP"] = {since = 3000, {"<", "state", "int"}},
  ["280MSG_SLGETEXPOSURE"] = {since = 3100, {"<", "exposure", "int"}},
  ["80MSG_SLSaveDataToFile"] = {{">", "size", "int"}, {">", "nameSize", "int"}, {"<", "answer", "answer"}, {">", "name", "name", "nameSize"}, {">", "data", "bytes", "size"}, {"<", "status", "status"}},
  ["81MSG_SLReadDataFromFile"] = {{">", "nameSize", "int"}, {"<", "answer", "answer"}, {">", "name", "name", "nameSize"}, {"<", "size", "size"}, {"<", "data", "bytes", "size"}, {"<", "status", "status"}},
  ["82MSG_SLReadIniInt"] = {{">", "section", "text"}, {">", "key", "text"}, {"<", "value", "int"}, {"<", "status", "status"}},
  ["83MSG_SLWriteIniInt"] = {{">", "section", "text"}, {">", "key", "text"}, {">", "value", "text"}, {"<", "status", "status"}},
  ["58MSG_SLSetOutputSettings"] = {{">", "output", "int"}, {">", "setting", "int"}, {"<", "status", "status"}},
  ["59MSG_SLExecOutput"] = {{">", "output", "int"}, {"<", "status", "status"}},
  ["84MSG_SLGetGPIOStatus"] = {since = 2400, {">", "line", "int"}, {"<", "state", "int"}, {"<", "status", "status"}},
  ["200MSG_SLRS232Exec"] = {since = 2500, {">", "request", "text"}, {"<", "reply", "text"}, {"<", "status", "status"}},
  ["230MSG_SLSetGPIOValue"] = {since = 2700, {">", "line", "int"}, {">", "value", "int"}, {"<", "status", "status"}},
  ["310MSG_EXEC_PROJCMD"] = {since = 3300, {">", "request", "int"}, {">", "argument", "int"}, {"<", "result1", "int"}, {"<", "result2", "int"}, {"<", "result3", "int"}, {"<", "status", "status"}},
}
-- End of what is made.

local COMMANDS, TRIGGERS, ANNOUNCEMENTS = 44330, 44331, 44332 -- ports: TCP, UDP, UDP
local LONGEST_BLOCK, LONGEST_ANSWER, LONGEST_TRIGGER = 0x7FFFFFFF, 298, 18
local QUESTION = "01UDP_SLANNOUNCE"

local fringix = Proto("fringix", "Fringix head")

local kinds = {status = "number", answer = "number", outcome = "number", size = "number", int = "number", text = "text", name = "text",
  bytes = "block", picture = "block"}

local f = {
  command = ProtoField.string("fringix.command", "Command"),
  reply = ProtoField.string("fringix.reply", "Reply to"),
  greeting = ProtoField.int32("fringix.greeting", "Greeting"),
  client_version = ProtoField.int32("fringix.client_version", "Protocol version of the client"),
  block = ProtoField.bytes("fringix.block", "Block"),
  request_in = ProtoField.framenum("fringix.request_in", "Command in frame", base.NONE, frametype.REQUEST),
  response_in = ProtoField.framenum("fringix.response_in", "Reply in frame", base.NONE, frametype.RESPONSE),
  time = ProtoField.double("fringix.time", "Seconds since the command"),
  trigger = ProtoField.string("fringix.trigger", "Trigger"),
  announce_request = ProtoField.string("fringix.announce.request", "Question for heads"),
  announce_reply = ProtoField.string("fringix.announce.reply", "Answer of a head"),
}

local announced = {"serial", "model", "info1", "info2", "info3", "info4", "info5", "info6", "info7"}
for _, name in ipairs(announced) do f["announce_" .. name] = ProtoField.int32("fringix.announce." .. name, name) end

-- A field for each name of an argument or a result, and for each kind of it: fringix.line, fringix.key.text
local function add_fields_of_commands()
  for _, command in pairs(commands) do
    for _, field in ipairs(command) do
      local kind, name = kinds[field[3]], field[2]
      if kind == "number" and not f["number " .. name] then f["number " .. name] = ProtoField.int32("fringix." .. name, name) end
      if kind == "text" and not f["text " .. name] then f["text " .. name] = ProtoField.string("fringix." .. name .. ".text", name) end
    end
  end
end
add_fields_of_commands()
fringix.fields = f

local function expert_info(name, text, group, severity) return ProtoExpert.new("fringix.expert." .. name, text, group, severity) end

local e = {
  unknown_command = expert_info("unknown_command", "No command begins here, or one that is not known", expert.group.UNDECODED, expert.severity.ERROR),
  impossible_length = expert_info("impossible_length", "A length that is not possible", expert.group.MALFORMED, expert.severity.ERROR),
  unknown_length = expert_info("unknown_length", "A length that follows from what this capture does not have", expert.group.UNDECODED, expert.severity.NOTE),
  failed = expert_info("failed", "The head tells of a failure", expert.group.RESPONSE_CODE, expert.severity.WARN),
  no_picture = expert_info("no_picture", "The head has no picture", expert.group.RESPONSE_CODE, expert.severity.WARN),
  no_command = expert_info("reply_without_command", "The head says something that no command has asked for", expert.group.SEQUENCE, expert.severity.ERROR),
  too_old = expert_info("too_old", "The head is too old for this command", expert.group.PROTOCOL, expert.severity.WARN),
  announcement = expert_info("announcement", "Numbers are missing in the answer", expert.group.MALFORMED, expert.severity.WARN),
  datagram = expert_info("datagram", "No datagram of a head, or one that is too long", expert.group.MALFORMED, expert.severity.WARN),
}
fringix.experts = e

local streams -- what is known of each connection, by its two ends
local askers -- addresses and ports that have asked for heads

function fringix.init() streams, askers = {}, {} end

local function new_stream(head_port, records) return {head_port = head_port, facts = {}, open = {}, records = records} end

local function place(address, port) return tostring(address) .. ":" .. port end

local function stream_of(pinfo)
  local ends = {place(pinfo.src, pinfo.src_port), place(pinfo.dst, pinfo.dst_port)}
  table.sort(ends)
  local key = table.concat(ends, " ")
  local stream = streams[key] or new_stream(COMMANDS, {})
  -- After the farewell the same two ports may serve another connection.
  if stream.over and pinfo.src_port == stream.head_port and not pinfo.visited then stream = new_stream(stream.head_port, stream.records) end
  streams[key] = stream
  return stream
end

-- Numbers and names with * and / between them, from left to right; nil when one of the names is not known.
local function evaluate(expression, exchange, stream)
  local value, sign = 1, "*"
  for term, next_sign in expression:gmatch("([^*/]+)([*/]?)") do
    local number = tonumber(term) or exchange.values[term] or stream.facts[term]
    if not number or (sign == "/" and number == 0) then return nil end
    value = sign == "*" and value * number or math.floor(value / number)
    sign = next_sign
  end
  return value
end

-- The 6 characters of a text's length; nil when they are none.
local function text_length(tvb, offset)
  local digits = tvb(offset, 6):string():match("^ *(%d+)$")
  return digits and tonumber(digits)
end

local function looks_like_command(tvb, offset)
  if tvb:len() - offset < 13 then return false end
  local length = text_length(tvb, offset)
  if not length or length < 7 or length > 64 then return false end
  return tvb(offset + 6, math.min(length, tvb:len() - offset - 6)):string():find("^%d+MSG_") ~= nil
    or tvb(offset + 6, 7):string() == "ByeBye="
end

-- Reading goes on in a table with tvb, offset and, as soon as something is missing, the number of bytes that are.
local function take(reader, length)
  local missing = reader.offset + length - reader.tvb:len()
  if missing > 0 then
    reader.missing = missing
    return nil
  end
  local range_offset = reader.offset
  reader.offset = reader.offset + length
  return range_offset
end

-- All that is there, because nobody knows where the next thing begins.
local function take_rest(reader)
  local offset = reader.offset
  reader.offset, reader.lost = reader.tvb:len(), true
  return offset
end

local function add(record, field, offset, length, value)
  local item = {field = field, offset = offset, length = length, value = value}
  record.items[#record.items + 1] = item
  return item
end

local function take_number(reader, record, field, exchange, stream)
  local offset = take(reader, 4)
  if not offset then return end
  local value = reader.tvb(offset, 4):le_int()
  local item = add(record, field, offset, 4, value)
  exchange.values[field[2]] = value
  if field[2]:find(".", 1, true) then stream.facts[field[2]] = value end
  if record.command == "20MSG_SLGetProtocolVersion" then stream.version = value end
  local kind = field[3]
  local fails = kind == "status" or kind == "answer" or kind == "outcome"
  if (fails and value ~= 0) or (kind == "size" and value < 0) then item.expert = e.failed end
  exchange.ended = (kind == "answer" and value ~= 0) or (kind == "size" and value <= 0)
end

local function take_text(reader, record, field)
  if not take(reader, 6) then return end
  local start = reader.offset - 6
  local length = text_length(reader.tvb, start)
  if not length then
    add(record, field, start, reader.tvb:len() - start, "?").expert = e.impossible_length
    take_rest(reader)
    return
  end
  local offset = take(reader, length)
  if offset then add(record, field, start, 6 + length, length > 0 and reader.tvb(offset, length):string() or "") end
end

local function take_block(reader, record, field, exchange, stream)
  local size = evaluate(field[4], exchange, stream)
  if not size or size < 0 or size > LONGEST_BLOCK then
    local offset = take_rest(reader)
    add(record, field, offset, reader.offset - offset, field[2]).expert = size and e.impossible_length or e.unknown_length
    return
  end
  local offset = take(reader, size)
  if not offset then return end
  local is_name = field[3] == "name"
  local value = is_name and size > 0 and reader.tvb(offset, size):stringz() or string.format("%s, %d bytes", field[2], size)
  local item = add(record, field, offset, size, value)
  if field[3] == "picture" and size > 1 and reader.tvb(offset, 2):uint() == 0x00FF then item.expert = e.no_picture end
end

-- What one side says before the other one does: the fields from the next one on that are its own.
local function take_fields(reader, record, sender, exchange, stream)
  local index = exchange.next
  local command = commands[exchange.command]
  while command[index] and command[index][1] == sender and not exchange.ended do
    local field = command[index]
    local kind = field[3] == "text" and "text" or kinds[field[3]] == "number" and "number" or "block"
    if kind == "number" then take_number(reader, record, field, exchange, stream)
    elseif kind == "text" then take_text(reader, record, field)
    else take_block(reader, record, field, exchange, stream) end
    if reader.missing then return end
    repeat index = index + 1 until not (reader.lost and command[index] and command[index][1] == sender)
  end
  reader.lost = nil
  exchange.next = index
  exchange.ended = exchange.ended or command[index] == nil
end

local function undecoded(reader, record, problem)
  local offset = take_rest(reader)
  add(record, {"", "data", "bytes"}, offset, reader.offset - offset, string.format("%d bytes", reader.offset - offset)).expert = problem
end

local function new_record(reader, title) return {start = reader.offset, title = title, items = {}} end

local function take_command(reader, stream, pinfo)
  local record = new_record(reader, "Command")
  local start = take(reader, 6)
  if not start then return record end
  local length = text_length(reader.tvb, start)
  local name = length and length > 0 and length <= 64 and take(reader, length) and reader.tvb(start + 6, length):string()
  if reader.missing then return record end
  if not name or not commands[name] then
    record.title = "Unknown command" .. (name and " " .. name or "")
    stream.open = {} -- nobody knows what the head answers to
    undecoded(reader, record, name and e.unknown_command or length and e.impossible_length or e.unknown_command)
    return record
  end
  record.command, record.title = name, name
  record.exchange = {command = name, next = 1, values = {}, frame = pinfo.number, time = pinfo.abs_ts}
  record.name_length = 6 + length
  record.too_old = commands[name].since and stream.version and stream.version < commands[name].since
  take_fields(reader, record, ">", record.exchange, stream)
  return record
end

-- The rest of a command whose first answer has come.
local function take_continuation(reader, stream, exchange)
  local record = new_record(reader, exchange.command .. ", continued")
  record.command, record.exchange = exchange.command, exchange
  take_fields(reader, record, ">", exchange, stream)
  return record
end

local function take_from_client(reader, stream, pinfo)
  local last = stream.open[#stream.open]
  if not stream.client_spoke and not looks_like_command(reader.tvb, reader.offset) and stream.greeted then
    local record = new_record(reader, "Protocol version of the client")
    local offset = take(reader, 4)
    if offset then record.items[1] = {proto = f.client_version, offset = offset, length = 4, value = reader.tvb(offset, 4):le_int()} end
    return record
  end
  local continues = last and commands[last.command][last.next] and commands[last.command][last.next][1] == ">"
  if continues then return take_continuation(reader, stream, last) end
  return take_command(reader, stream, pinfo)
end

local function take_from_head(reader, stream, pinfo)
  local exchange = stream.open[1]
  if not exchange and not stream.client_spoke and not stream.greeted and reader.tvb:len() <= 4 then
    local record = new_record(reader, "Greeting")
    local offset = take(reader, 4)
    if offset then record.items[1] = {proto = f.greeting, offset = offset, length = 4, value = reader.tvb(0, 4):le_int()} end
    return record
  end
  local record = new_record(reader, exchange and "Reply to " .. exchange.command or "Unexpected")
  local answers = exchange and commands[exchange.command][exchange.next][1] == "<"
  if not answers then
    undecoded(reader, record, e.no_command)
    return record
  end
  record.command, record.exchange, record.is_reply = exchange.command, exchange, true
  record.seconds = tonumber(tostring(pinfo.abs_ts - exchange.time))
  take_fields(reader, record, "<", exchange, stream)
  return record
end

-- What a record that is complete changes in what is known of its connection.
local function settle(record, stream, from_client, pinfo)
  if from_client then stream.client_spoke = true else stream.greeted = true end
  if record.command == "ByeBye=" then stream.over = true end
  local exchange = record.exchange
  if not exchange then return end
  if record.is_reply then exchange.reply_frame = pinfo.number end
  if from_client and exchange.next == 1 and exchange.ended then return end -- neither arguments nor a reply
  if from_client and stream.open[#stream.open] ~= exchange and not exchange.ended then stream.open[#stream.open + 1] = exchange end
  if exchange.ended and stream.open[1] == exchange then table.remove(stream.open, 1) end
end

local function copy(values)
  local copied = {}
  for key, value in pairs(values) do copied[key] = value end
  return copied
end

-- All that is complete in the bytes, from first to last. More bytes are asked for when something is not.
local function read_records(tvb, pinfo, stream, from_client)
  local reader, records = {tvb = tvb, offset = 0}, {}
  while reader.offset < tvb:len() do
    local start, facts = reader.offset, copy(stream.facts)
    local exchange = stream.open[from_client and #stream.open or 1]
    local values = exchange and copy(exchange.values)
    local record = (from_client and take_from_client or take_from_head)(reader, stream, pinfo)
    if reader.missing then
      if exchange then exchange.values, exchange.ended = values, false end
      stream.facts = facts
      pinfo.desegment_offset, pinfo.desegment_len = start, reader.missing
      return records
    end
    record.length = reader.offset - start
    settle(record, stream, from_client, pinfo)
    records[#records + 1] = record
  end
  return records
end

local function show_item(tree, tvb, item, whole)
  local range = item.length > 0 and tvb(item.offset, item.length) or whole
  local shown
  if item.proto then
    shown = tree:add_le(item.proto, range)
  elseif kinds[item.field[3]] == "number" then
    shown = tree:add_le(f["number " .. item.field[2]], range)
  elseif kinds[item.field[3]] == "text" and f["text " .. item.field[2]] then
    shown = tree:add(f["text " .. item.field[2]], range, item.value)
  else
    shown = tree:add(f.block, range):set_text(item.value)
  end
  if item.expert then shown:add_proto_expert_info(item.expert) end
end

-- One line for the list of frames.
local function summary(record)
  local words = {record.title}
  for _, item in ipairs(record.items) do
    local is_block = item.field and kinds[item.field[3]] == "block"
    local name = item.field and item.field[2]
    words[#words + 1] = is_block and "[" .. item.value .. "]" or (name and name .. "=" or "") .. tostring(item.value)
    if item.expert == e.failed then words[#words + 1] = "(failed)" end
    if item.expert == e.no_picture then words[#words + 1] = "(no picture)" end
  end
  return table.concat(words, " ")
end

local function show(record, tvb, tree)
  local range = tvb(record.start, record.length)
  local node = tree:add(fringix, range, "Fringix, " .. summary(record))
  if record.command and record.is_reply then node:add(f.reply, range, record.command):set_generated() end
  if record.name_length then
    local name = node:add(f.command, tvb(record.start, record.name_length), record.command)
    if record.too_old then name:add_proto_expert_info(e.too_old) end
  end
  for _, item in ipairs(record.items) do show_item(node, tvb, item, range) end
  if record.is_reply then
    node:add(f.request_in, record.exchange.frame):set_generated()
    node:add(f.time, record.seconds):set_generated()
  elseif record.exchange and record.exchange.reply_frame then
    node:add(f.response_in, record.exchange.reply_frame):set_generated()
  end
end

function fringix.dissector(tvb, pinfo, tree)
  local stream = stream_of(pinfo)
  local key = table.concat({pinfo.number, tvb:len(), tvb(0, math.min(tvb:len(), 64)):bytes():tohex()}, " ")
  local records = stream.records[key]
  if not records then
    records = read_records(tvb, pinfo, stream, pinfo.dst_port == stream.head_port)
    if #records > 0 or not pinfo.visited then stream.records[key] = #records > 0 and records or nil end
  end
  pinfo.cols.protocol = "Fringix"
  for i, record in ipairs(records) do
    show(record, tvb, tree)
    if i == 1 then pinfo.cols.info = summary(record) else pinfo.cols.info:append(" | " .. summary(record)) end
  end
end

local function show_announcement(text, tvb, tree)
  local node = tree:add(fringix, tvb(), "Fringix, answer of a head")
  node:add(f.announce_reply, tvb(), text)
  local rest, next_one = text, 1
  local function number(pattern)
    local digits, behind = rest:match(pattern .. "([+-]?%d+)(.*)")
    local value = digits and tonumber(digits)
    if not value or value < -0x80000000 or value > 0x7FFFFFFF then return false end
    node:add(f["announce_" .. announced[next_one]], tvb(), value)
    rest, next_one = behind, next_one + 1
    return true
  end
  while next_one <= #announced and number(announced[next_one] == "info2" and "^%s*" or "^%s*%S+%s+") do end
  if next_one <= #announced then node:add_proto_expert_info(e.announcement, announced[next_one] .. " and what follows it cannot be read") end
  if tvb:len() > LONGEST_ANSWER then node:add_proto_expert_info(e.datagram, "more than 298 bytes: clients drop it") end
end

-- Clients read a datagram up to the first zero.
local function text_of(tvb) return tvb:len() > 0 and tvb():string():match("^%Z*") or "" end

local function is_question(tvb) return tvb:len() == #QUESTION and tvb():string() == QUESTION end

local function is_trigger(tvb) return tvb:len() <= LONGEST_TRIGGER and text_of(tvb):find("02UDP_GPIO", 1, true) ~= nil end

-- Heads answer from any port; the port that has asked tells, or, where the capture does not have the question, how the answer begins.
local function is_answer(tvb, pinfo)
  if askers[place(pinfo.dst, pinfo.dst_port)] then return true end
  local text = tvb:len() <= LONGEST_ANSWER and text_of(tvb) or ""
  return text:find("^SERIAL%s+[+-]?%d+%s+%a%S*%s+[+-]?%d") ~= nil and not text:find("[^%g%s]")
end

local function dissect_datagram(tvb, pinfo, tree)
  pinfo.cols.protocol = "Fringix"
  if is_question(tvb) then
    askers[place(pinfo.src, pinfo.src_port)] = true
    pinfo.cols.info = "Which heads are there?"
    tree:add(fringix, tvb(), "Fringix, question for heads"):add(f.announce_request, tvb(), QUESTION)
  elseif is_trigger(tvb) then
    pinfo.cols.info = "Trigger"
    tree:add(fringix, tvb(), "Fringix, trigger"):add(f.trigger, tvb(), text_of(tvb))
  elseif pinfo.src_port == ANNOUNCEMENTS or is_answer(tvb, pinfo) then
    pinfo.cols.info = "A head: " .. text_of(tvb)
    show_announcement(text_of(tvb), tvb, tree)
  else
    pinfo.cols.info = "Not understood"
    tree:add(fringix, tvb(), "Fringix, not understood"):add_proto_expert_info(e.datagram)
  end
end

local datagrams = Proto("fringix_udp", "Fringix datagram")
function datagrams.dissector(tvb, pinfo, tree) dissect_datagram(tvb, pinfo, tree) end

-- Connections at other ports: the first command tells who is the client.
local function looks_like_session(tvb, pinfo, tree)
  if not looks_like_command(tvb, 0) then return false end
  local stream = stream_of(pinfo)
  stream.head_port, stream.greeted, stream.client_spoke = pinfo.dst_port, true, true
  pinfo.conversation = fringix
  fringix.dissector(tvb, pinfo, tree)
  return true
end

local function looks_like_datagram(tvb, pinfo, tree)
  if not is_question(tvb) and not is_trigger(tvb) and not is_answer(tvb, pinfo) then return false end
  dissect_datagram(tvb, pinfo, tree)
  return true
end

DissectorTable.get("tcp.port"):add(COMMANDS, fringix)
DissectorTable.get("udp.port"):add(TRIGGERS, datagrams)
DissectorTable.get("udp.port"):add(ANNOUNCEMENTS, datagrams)
fringix:register_heuristic("tcp", looks_like_session)
datagrams:register_heuristic("udp", looks_like_datagram)
