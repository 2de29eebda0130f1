-- Wireshark and tshark: names the fields of the two private Modbus functions 0x47 (text) and 0x48 (binary) that
-- protocol.md describes. Wireshark's own Modbus/TCP dissector finds the frames; this one reads what it calls unknown.
--
--     tshark -X lua_script:updater-modbus.lua -o mbtcp.tcp.port:15021-15023 -r capture.pcap

local updater = Proto("updater", "Firmware update over Modbus")

local TEXT, BINARY = 0x47, 0x48
local READ_VALUE, WRITE_BLOCK, IMAGE_CRC, FINISH = 0xA000, 0xA001, 0xA002, 0xA003

-- The finish word is FINISH plus the processor's number in 16 bits, so that every other word is one.
local words = {
    { READ_VALUE, READ_VALUE, "CmdReadValue" },
    { WRITE_BLOCK, WRITE_BLOCK, "CmdWriteBlock" },
    { IMAGE_CRC, IMAGE_CRC, "CmdImageCrc" },
    { FINISH, 0xFFFF, "CmdFinish + IdCPU" },
    { 0, READ_VALUE - 1, "CmdFinish + IdCPU" },
}
local exceptions = {
    [0x01] = "Illegal function",
    [0x02] = "Illegal data address",
    [0x03] = "Illegal data value",
    [0x04] = "Server device failure",
    [0x0A] = "Gateway path unavailable",
    [0x0B] = "Gateway target device failed to respond",
}

local f = {
    length = ProtoField.uint16("updater.length", "Length of what follows"),
    command = ProtoField.string("updater.command", "Command"),
    answer = ProtoField.string("updater.answer", "Answer"),
    text_word = ProtoField.string("updater.text_word", "Word"),
    word = ProtoField.uint16("updater.word", "Command word", base.HEX + base.RANGE_STRING, words),
    processor = ProtoField.uint16("updater.processor", "Processor (IdCPU)"),
    parameter1 = ProtoField.uint16("updater.parameter1", "Parameter 1", base.HEX),
    parameter2 = ProtoField.uint16("updater.parameter2", "Parameter 2", base.HEX),
    offset = ProtoField.uint32("updater.offset", "Offset in the image"),
    block_size = ProtoField.uint32("updater.block_size", "Block size"),
    block = ProtoField.bytes("updater.block", "Block"),
    crc = ProtoField.uint16("updater.crc", "CRC of the image", base.HEX),
    image_size = ProtoField.uint32("updater.image_size", "Size of the image"),
    value = ProtoField.uint32("updater.value", "Value"),
    rest = ProtoField.bytes("updater.rest", "Bytes that belong to no field"),
    exception = ProtoField.uint8("updater.exception", "Exception", base.HEX, exceptions),
}
updater.fields = f

local wrong_length = ProtoExpert.new("updater.wrong_length", "A length contradicts the bytes that follow",
    expert.group.MALFORMED, expert.severity.WARN)
updater.experts = { wrong_length }

local modbus_length = Field.new("mbtcp.len")
local stream = Field.new("tcp.stream")
local syn = Field.new("tcp.flags.syn")
local ack = Field.new("tcp.flags.ack")

-- By TCP stream: the port of the side that opened the connection, which is the one that asks.
local client_ports = {}

function updater.init()
    client_ports = {}
end

-- `data`: from the length word on.
local function is_answer(pinfo, func, data)
    local client = client_ports[stream().value]
    if client then
        return pinfo.src_port ~= client
    end
    -- The capture began later than the connection.
    if func == BINARY then
        return data:len() < 8
    end
    return data:len() < 4 or data:range(data:len() - 2):string() ~= "?;"
end

local function add_rest(data, from, tree)
    if from < data:len() then
        tree:add(f.rest, data:range(from))
    end
end

-- Each of these returns what the frame says in one line.
local function text(data, answers, tree)
    if data:len() == 2 then
        return "no text"
    end
    local range = data:range(2)
    local said = range:string()
    local node = tree:add(answers and f.answer or f.command, range)
    if answers then
        -- As the program reads it: without ";", split at each single space.
        local at = 2
        for word in (said:gsub(";", "") .. " "):gmatch("([^ ]*) ") do
            if at + #word <= data:len() then
                node:add(f.text_word, data:range(at, #word), word)
            end
            at = at + #word + 1
        end
    end
    return said
end

local function block(data, tree)
    local offset = data:range(4, 4):le_uint()
    tree:add_le(f.offset, data:range(4, 4))
    if data:len() < 12 then
        return "block without a size"
    end
    local size = data:range(8, 4):le_uint()
    local node = tree:add_le(f.block_size, data:range(8, 4))
    if size ~= data:len() - 12 then
        node:add_proto_expert_info(wrong_length)
    end
    if data:len() > 12 then
        tree:add(f.block, data:range(12))
    end
    return string.format("block at offset %d, %d bytes", offset, size)
end

local function binary_request(data, word, tree)
    if data:len() < 8 then
        add_rest(data, 4, tree)
        return "too short"
    end
    local parameters = data:range(4, 4)
    tree:add_le(f.parameter1, data:range(4, 2))
    tree:add_le(f.parameter2, data:range(6, 2))
    if word == WRITE_BLOCK then
        return block(data, tree)
    end
    add_rest(data, 8, tree)
    if word == READ_VALUE then
        return "read value"
    elseif word == IMAGE_CRC then
        tree:add_le(f.crc, data:range(4, 2))
        return string.format("CRC 0x%04x", data:range(4, 2):le_uint())
    end
    tree:add_le(f.image_size, parameters)
    return string.format("finish for processor %d, %d bytes", (word - FINISH) % 0x10000, parameters:le_uint())
end

local function binary_answer(data, word, tree)
    if word == READ_VALUE and data:len() == 8 then
        tree:add_le(f.value, data:range(4, 4))
        return string.format("value %d", data:range(4, 4):le_uint())
    end
    add_rest(data, 4, tree)
    return string.format("done 0x%04x", word)
end

local function binary(data, answers, tree)
    if data:len() < 4 then
        add_rest(data, 2, tree)
        return "no command word"
    end
    local word = data:range(2, 2):le_uint()
    local node = tree:add_le(f.word, data:range(2, 2))
    if word < READ_VALUE or word >= FINISH then
        node:add(f.processor, data:range(2, 2), (word - FINISH) % 0x10000):set_generated()
    end
    return (answers and binary_answer or binary_request)(data, word, tree)
end

-- `pdu`: the function code and its data. Returns one line, or nothing for a function that is not ours.
local function dissect(pdu, pinfo, tree)
    local func = pdu:range(0, 1):uint()
    local name = ({ [TEXT] = "text", [BINARY] = "binary" })[func % 0x80]
    if not name or pdu:len() < 2 then
        return nil
    end
    local node = tree:add(updater, pdu:range())
    if func >= 0x80 then
        node:add(f.exception, pdu:range(1, 1))
        return "exception: " .. (exceptions[pdu:range(1, 1):uint()] or pdu:range(1, 1):uint())
    end
    if pdu:len() < 3 then
        node:add_proto_expert_info(wrong_length)
        return "no length"
    end
    local data = pdu:range(1):tvb()
    local answers = is_answer(pinfo, func, data)
    local length = node:add_le(f.length, data:range(0, 2))
    if data:range(0, 2):le_uint() ~= data:len() - 2 then
        length:add_proto_expert_info(wrong_length)
    end
    node:append_text(string.format(", %s %s", name, answers and "answer" or "request"))
    return (func == TEXT and text or binary)(data, answers, node)
end

function updater.dissector(_, pinfo, tree)
    if syn() and syn().value and not ack().value then
        client_ports[stream().value] = pinfo.src_port
    end
    local lines = {}
    for _, length in ipairs({ modbus_length() }) do
        local from, size = length.offset + 3, length.value - 1
        local bytes = length.source
        if bytes and size > 0 and from + size <= bytes:len() then
            table.insert(lines, dissect(bytes:range(from, size):tvb(), pinfo, tree))
        end
    end
    if #lines > 0 then
        pinfo.cols.info = table.concat(lines, " | ")
    end
end

register_postdissector(updater)
